/// Where an earlier render of a scene was when its result was saved.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/core/film/film.h"
#include "engine/core/render.h"
#include "engine/core/result/render_progress.h"

namespace nemra::core {

struct ResumePoint {
    std::shared_ptr<const Film> film;
    std::shared_ptr<const RenderProgress> progress;
    double time = 0.0;  ///< s that it took
};

/// What a render is, for those who ask whether a file is of it.
struct RenderIdentity {
    const PreparedScene& scene;
    std::uint64_t fingerprint;  ///< see fingerprintOf
    bool adaptive;
};

/// Reads the svraw file of an earlier render. False after one error message for a file that can't be read, or isn't of this
/// render; true with an empty `point` if there is no file. The file stays as it is.
bool findResumePoint(const std::string& path, const RenderIdentity& render, std::shared_ptr<const ResumePoint>& point);

}  // namespace nemra::core
