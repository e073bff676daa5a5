source_package=qr-code-generator
native_package=libqrcodegencpp-dev

build_library() {
    compile_cpp -std=c++17 -c source/cpp/qrcodegen.cpp -o qrcodegen.o
    mkdir -p "$stage/include/qrcodegen" "$stage/lib"
    "$triplet-ar" rcs "$stage/lib/libqrcodegencpp.a" qrcodegen.o
    # The native package's folder and library name, so that the same lines find it on both platforms.
    cp source/cpp/qrcodegen.hpp "$stage/include/qrcodegen/"
}
