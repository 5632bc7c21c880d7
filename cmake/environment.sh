# What the scripts share: the Debian packages of the project, and a compiler cache that serves every checkout.
build_packages=(g++ cmake ninja-build ccache nlohmann-json3-dev libcli11-dev libpng-dev libassimp-dev qt6-base-dev libqt6opengl6-dev libgl1-mesa-dri)
test_packages=(libgtest-dev libbenchmark-dev xvfb xauth xdotool view3dscene)
clang_packages=(clang-14 libclang-rt-14-dev)

export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
