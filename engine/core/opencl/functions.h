/// The functions of the system's OpenCL library, which is loaded when they are first asked for. OpenCL 1.2 is all that is used.
#pragma once

#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>

namespace nemra::core::opencl {

#define NEMRA_OPENCL_FUNCTIONS(X) \
    X(clGetPlatformIDs)           \
    X(clGetDeviceIDs)             \
    X(clGetDeviceInfo)            \
    X(clCreateContext)            \
    X(clCreateCommandQueue)       \
    X(clReleaseCommandQueue)      \
    X(clCreateProgramWithSource)  \
    X(clBuildProgram)             \
    X(clGetProgramBuildInfo)      \
    X(clReleaseProgram)           \
    X(clCreateKernel)             \
    X(clReleaseKernel)            \
    X(clSetKernelArg)             \
    X(clEnqueueNDRangeKernel)     \
    X(clCreateBuffer)             \
    X(clReleaseMemObject)         \
    X(clEnqueueReadBuffer)        \
    X(clEnqueueWriteBuffer)       \
    X(clFinish)

struct Functions {
#define NEMRA_OPENCL_POINTER(name) decltype(&::name) name = nullptr;
    NEMRA_OPENCL_FUNCTIONS(NEMRA_OPENCL_POINTER)
#undef NEMRA_OPENCL_POINTER
};

/// Null if the machine has no OpenCL library. It stays loaded until the process ends.
const Functions* functions();

}  // namespace nemra::core::opencl
