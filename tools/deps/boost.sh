# Headers only; the installed package is the same on every platform.
native_package=libboost1.74-dev

build_library() {
    # A hundred and sixty megabytes of which few are read: a link is enough.
    mkdir -p "$stage/include"
    ln -s /usr/include/boost "$stage/include/boost"
}
