# Builds for 32-bit x86 on Debian. The programs are static, so that an x86-64 machine
# runs them without the libraries of the other architecture:
#
#     script/setup i686
#     cmake --preset i686
#     cmake --build --preset i686
#     ctest --preset i686
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
# The machine needs no emulator, but CMake runs what it has built through one only.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
