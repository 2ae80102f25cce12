# For cmake --toolchain: WebAssembly modules by clang 14, with the C and C++ libraries of Debian's wasm32 packages.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_EXE_LINKER_FLAGS_INIT -mexec-model=reactor)
