# Builds for 64-bit ARM on Debian, and runs what was built through an emulator:
#
#     dpkg --add-architecture arm64
#     apt-get install g++-aarch64-linux-gnu qemu-user-static libbz2-dev:arm64 libstdc++6:arm64
#     apt-get install libgtest-dev:arm64 libgmock-dev:arm64     for the tests
#     cmake --preset release --toolchain cmake/toolchains/aarch64-linux-gnu.cmake -B build/aarch64
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)
