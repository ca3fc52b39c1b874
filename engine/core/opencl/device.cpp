#include "engine/core/opencl/device.h"

#include <algorithm>
#include <atomic>

namespace nemra::core::opencl {

namespace {

std::atomic<Device*> chosen{nullptr};

std::string cleaned(std::string name) {
    name.resize(std::min(name.size(), name.find('\0')));
    std::replace(name.begin(), name.end(), '|', ' ');
    name.erase(0, std::min(name.size(), name.find_first_not_of(' ')));
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

bool hasInfo(const Functions& cl, cl_device_id id, cl_device_info what) {
    cl_bool answer = CL_FALSE;
    return cl.clGetDeviceInfo(id, what, sizeof answer, &answer, nullptr) == CL_SUCCESS && answer == CL_TRUE;
}

std::string nameOf(const Functions& cl, cl_device_id id) {
    std::size_t size = 0;
    if (cl.clGetDeviceInfo(id, CL_DEVICE_NAME, 0, nullptr, &size) != CL_SUCCESS) return {};
    std::string name(size, '\0');
    if (cl.clGetDeviceInfo(id, CL_DEVICE_NAME, size, name.data(), nullptr) != CL_SUCCESS) return {};
    return cleaned(std::move(name));
}

std::vector<Device*> find() {
    const Functions* const cl = functions();
    cl_uint count = 0;
    if (!cl || cl->clGetPlatformIDs(0, nullptr, &count) != CL_SUCCESS) return {};
    std::vector<cl_platform_id> platforms(count);
    if (count == 0 || cl->clGetPlatformIDs(count, platforms.data(), nullptr) != CL_SUCCESS) return {};
    std::vector<Device*> found;
    for (const cl_platform_id platform : platforms) {
        if (cl->clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS || count == 0) continue;
        std::vector<cl_device_id> ids(count);
        if (cl->clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, count, ids.data(), nullptr) != CL_SUCCESS) continue;
        for (const cl_device_id id : ids) {
            const bool isUsable = hasInfo(*cl, id, CL_DEVICE_AVAILABLE) && hasInfo(*cl, id, CL_DEVICE_COMPILER_AVAILABLE) &&
                                  hasInfo(*cl, id, CL_DEVICE_ENDIAN_LITTLE);
            std::string name = isUsable ? nameOf(*cl, id) : std::string();
            if (!name.empty()) found.push_back(new Device(*cl, platform, id, std::move(name)));
        }
    }
    return found;
}

}  // namespace

void check(cl_int code, const char* call) {
    if (code == CL_SUCCESS) return;
    switch (code) {
        case CL_MEM_OBJECT_ALLOCATION_FAILURE:
        case CL_OUT_OF_RESOURCES:
        case CL_INVALID_BUFFER_SIZE:
            throw Failure("the device hasn't enough memory");
        case CL_OUT_OF_HOST_MEMORY:
            throw Failure("the device's driver hasn't enough memory");
        default:
            throw Failure(std::string(call) + " answered " + std::to_string(code));
    }
}

Device::Device(const Functions& functions, cl_platform_id platform, cl_device_id id, std::string name)
    : functions_(functions), platform_(platform), id_(id), name_(std::move(name)) {}

cl_context Device::context() {
    const std::lock_guard lock(mutex_);
    return contextLocked();
}

cl_context Device::contextLocked() {
    if (context_) return context_;
    const cl_context_properties properties[] = {CL_CONTEXT_PLATFORM, reinterpret_cast<cl_context_properties>(platform_), 0};
    cl_int code = CL_SUCCESS;
    const cl_context made = functions_.clCreateContext(properties, 1, &id_, nullptr, nullptr, &code);
    check(code, "clCreateContext");
    return context_ = made;
}

cl_program Device::program(const Source& source) {
    const std::lock_guard lock(mutex_);
    const auto known = programs_.find(source.text);
    if (known != programs_.end()) {
        if (!known->second) throw Failure(std::string("the kernels ") + source.name + " can't be built", true);
        return known->second;
    }
    return build(source);
}

cl_program Device::build(const Source& source) {
    cl_int code = CL_SUCCESS;
    const char* text = source.text;
    const cl_program made = functions_.clCreateProgramWithSource(contextLocked(), 1, &text, nullptr, &code);
    check(code, "clCreateProgramWithSource");
    code = functions_.clBuildProgram(made, 1, &id_, "-cl-std=CL1.2", nullptr, nullptr);
    if (code == CL_SUCCESS) {
        programs_[source.text] = made;
        return made;
    }
    std::string why;
    std::size_t size = 0;
    if (functions_.clGetProgramBuildInfo(made, id_, CL_PROGRAM_BUILD_LOG, 0, nullptr, &size) == CL_SUCCESS && size > 1) {
        why.resize(size);
        if (functions_.clGetProgramBuildInfo(made, id_, CL_PROGRAM_BUILD_LOG, size, why.data(), nullptr) != CL_SUCCESS)
            why.clear();
        why.resize(std::min(why.size(), why.find('\0')));
    }
    functions_.clReleaseProgram(made);
    programs_[source.text] = nullptr;
    throw Failure(std::string("the kernels ") + source.name + " can't be built, clBuildProgram answered " + std::to_string(code) +
                  (why.empty() ? "" : ": " + why));
}

const std::vector<Device*>& devices() {
    static const auto* const found = new std::vector<Device*>(find());
    return *found;
}

bool chooseDevice(std::string_view name) {
    for (Device* const device : devices()) {
        if (!name.empty() && device->name() != name) continue;
        chosen = device;
        return true;
    }
    chooseNone();
    return false;
}

void chooseNone() { chosen = nullptr; }

Device* chosenDevice() { return chosen; }

}  // namespace nemra::core::opencl
