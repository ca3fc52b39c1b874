#include "engine/core/opencl/run.h"

#include <algorithm>

namespace nemra::core::opencl {

Run::Run(Device& device, const Source& source)
    : device_(device), functions_(device.functions()), program_(device.program(source)) {
    cl_int code = CL_SUCCESS;
    queue_ = functions_.clCreateCommandQueue(device_.context(), device_.id(), 0, &code);
    check(code, "clCreateCommandQueue");
}

Run::~Run() {
    functions_.clFinish(queue_);
    for (const auto& [name, kernel] : kernels_) functions_.clReleaseKernel(kernel);
    functions_.clReleaseCommandQueue(queue_);
}

Buffer Run::allocate(std::size_t bytes) {
    cl_int code = CL_SUCCESS;
    const cl_mem memory =
        functions_.clCreateBuffer(device_.context(), CL_MEM_READ_WRITE, std::max(bytes, std::size_t{1}), nullptr, &code);
    check(code, "clCreateBuffer");
    return {functions_, memory};
}

void Run::write(const Buffer& buffer, const void* from, std::size_t bytes) {
    if (bytes == 0) return;
    check(functions_.clEnqueueWriteBuffer(queue_, buffer.memory(), CL_TRUE, 0, bytes, from, 0, nullptr, nullptr),
          "clEnqueueWriteBuffer");
}

void Run::readBytes(const Buffer& buffer, void* to, std::size_t bytes) {
    check(functions_.clFinish(queue_), "clFinish");
    if (bytes == 0) return;
    check(functions_.clEnqueueReadBuffer(queue_, buffer.memory(), CL_TRUE, 0, bytes, to, 0, nullptr, nullptr),
          "clEnqueueReadBuffer");
}

cl_kernel Run::kernelNamed(const char* name) {
    const auto known = kernels_.find(name);
    if (known != kernels_.end()) return known->second;
    cl_int code = CL_SUCCESS;
    const cl_kernel made = functions_.clCreateKernel(program_, name, &code);
    check(code, "clCreateKernel");
    kernels_[name] = made;
    return made;
}

void Run::enqueue(cl_kernel kernel, int width, int height) {
    constexpr std::size_t kGroup = 64;
    if (width <= 0 || height <= 0) return;
    const std::size_t size[] = {(static_cast<std::size_t>(width) + kGroup - 1) / kGroup * kGroup,
                                static_cast<std::size_t>(height)};
    check(functions_.clEnqueueNDRangeKernel(queue_, kernel, 2, nullptr, size, nullptr, 0, nullptr, nullptr),
          "clEnqueueNDRangeKernel");
}

void Run::setBytes(cl_kernel kernel, cl_uint index, const void* value, std::size_t size) {
    check(functions_.clSetKernelArg(kernel, index, size, value), "clSetKernelArg");
}

}  // namespace nemra::core::opencl
