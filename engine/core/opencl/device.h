/// Devices of the machine, and which of them image filters run on.
#pragma once

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/opencl/functions.h"

namespace nemra::core::opencl {

/// OpenCL C, the kernels of one filter. Lives as long as the process, as devices know a program by its source's address.
struct Source {
    const char* name;
    const char* text;
};

/// What didn't work on a device.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& what, bool isKnown = false) : std::runtime_error(what), isKnown_(isKnown) {}
    /// It has been reported before: a program that this device's compiler refused.
    bool isKnown() const noexcept { return isKnown_; }

private:
    bool isKnown_;
};

/// Throws a Failure that names the call and the code unless the code is CL_SUCCESS.
void check(cl_int code, const char* call);

/// A device with what is kept for it. Never destroyed, so that a filter may go on with it whatever is chosen meanwhile.
class Device {
public:
    Device(const Functions& functions, cl_platform_id platform, cl_device_id id, std::string name);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const std::string& name() const noexcept { return name_; }
    const Functions& functions() const noexcept { return functions_; }
    cl_device_id id() const noexcept { return id_; }
    /// These two throw a Failure. The first use makes them; any thread may call.
    cl_context context();
    cl_program program(const Source& source);

private:
    cl_context contextLocked();
    cl_program build(const Source& source);

    const Functions& functions_;
    cl_platform_id platform_;
    cl_device_id id_;
    std::string name_;
    std::mutex mutex_;
    cl_context context_ = nullptr;
    std::map<const char*, cl_program> programs_;  ///< by source text; null for one that the compiler refused
};

/// The devices that can compile and run kernels; found at the first call and kept. Their names hold no '|', and no blanks at
/// their ends.
const std::vector<Device*>& devices();

/// Filters run on the device of that name from now on, on the first one for an empty name. False if there is none: then they run
/// on the processor, as after chooseNone().
bool chooseDevice(std::string_view name);
void chooseNone();

/// Null if filters run on the processor.
Device* chosenDevice();

}  // namespace nemra::core::opencl
