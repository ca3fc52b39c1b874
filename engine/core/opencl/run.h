/// One piece of work on a device: its memory, and kernels called in order.
#pragma once

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/core/opencl/device.h"

namespace nemra::core::opencl {

/// Memory of a device, let go with this object.
class Buffer {
public:
    Buffer(const Functions& functions, cl_mem memory) : functions_(&functions), memory_(memory) {}
    Buffer(Buffer&& other) noexcept : functions_(other.functions_), memory_(std::exchange(other.memory_, nullptr)) {}
    Buffer& operator=(Buffer&& other) noexcept {
        std::swap(functions_, other.functions_);
        std::swap(memory_, other.memory_);
        return *this;
    }
    ~Buffer() {
        if (memory_) functions_->clReleaseMemObject(memory_);
    }
    const cl_mem& memory() const noexcept { return memory_; }

private:
    const Functions* functions_;
    cl_mem memory_;
};

/// Has a queue and kernels of its own, so several threads can each have a Run on the same device. What fails throws a Failure,
/// maybe only at the next read().
class Run {
public:
    Run(Device& device, const Source& source);
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Not initialised.
    template <class T>
    Buffer memoryFor(std::size_t count) {
        return allocate(count * sizeof(T));
    }
    template <class T>
    Buffer copyOf(const T* values, std::size_t count) {
        Buffer buffer = allocate(count * sizeof(T));
        write(buffer, values, count * sizeof(T));
        return buffer;
    }
    template <class T>
    Buffer copyOf(const std::vector<T>& values) {
        return copyOf(values.data(), values.size());
    }
    /// Waits until all work so far is done.
    template <class T>
    std::vector<T> read(const Buffer& buffer, std::size_t count) {
        std::vector<T> values(count);
        readBytes(buffer, values.data(), count * sizeof(T));
        return values;
    }

    /// Calls a kernel for width x height items, get_global_id(0) and (1). There may be more of the former, which the kernel must
    /// pass over: a full number of groups is quicker. Arguments are buffers, cl_int and cl_float.
    template <class... Arguments>
    void call(const char* kernel, int width, int height, const Arguments&... arguments) {
        const cl_kernel called = kernelNamed(kernel);
        cl_uint index = 0;
        (set(called, index++, arguments), ...);
        enqueue(called, width, height);
    }

private:
    Buffer allocate(std::size_t bytes);
    void write(const Buffer& buffer, const void* from, std::size_t bytes);
    void readBytes(const Buffer& buffer, void* to, std::size_t bytes);
    cl_kernel kernelNamed(const char* name);
    void enqueue(cl_kernel kernel, int width, int height);
    void setBytes(cl_kernel kernel, cl_uint index, const void* value, std::size_t size);
    void set(cl_kernel kernel, cl_uint index, const Buffer& buffer) { setBytes(kernel, index, &buffer.memory(), sizeof(cl_mem)); }
    void set(cl_kernel kernel, cl_uint index, cl_int value) { setBytes(kernel, index, &value, sizeof value); }
    void set(cl_kernel kernel, cl_uint index, cl_float value) { setBytes(kernel, index, &value, sizeof value); }

    Device& device_;
    const Functions& functions_;
    cl_program program_;
    cl_command_queue queue_;
    std::map<std::string_view, cl_kernel> kernels_;  // names are literals
};

}  // namespace nemra::core::opencl
