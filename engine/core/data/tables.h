/// Published tables that the engine carries. Origin and licence stand at the head of each table's file.
#pragma once

namespace nemra::core::data {

inline constexpr int kObserverFirst = 360;  ///< nm
inline constexpr int kObserverCount = 471;  ///< one row per nm up to 830
extern const double kCie1931[kObserverCount][3];
extern const double kCie1964[kObserverCount][3];

inline constexpr int kMallettFirst = 380;  ///< nm
inline constexpr int kMallettStep = 5;     ///< nm
inline constexpr int kMallettCount = 81;
extern const double kMallett2019[kMallettCount][3];

inline constexpr int kScotopicFirst = 380;  ///< nm
inline constexpr int kScotopicCount = 401;  ///< one row per nm up to 780
extern const double kScotopic[kScotopicCount];

inline constexpr int kSunFirst = 280;  ///< nm
inline constexpr int kSunCount = 921;  ///< one row per nm up to 1200
extern const double kSunDirect[kSunCount];

inline constexpr int kColorMapCount = 33;
extern const double kViridis[kColorMapCount][3];
extern const double kInferno[kColorMapCount][3];
extern const double kTurbo[kColorMapCount][3];

inline constexpr int kGuthRows = 31;
inline constexpr int kGuthColumns = 20;
inline constexpr double kGuthStep = 0.1;  ///< of T/R and H/R
extern const double kGuthIndex[kGuthRows][kGuthColumns];

}  // namespace nemra::core::data
