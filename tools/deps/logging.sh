# Headers only, with what they format with; the installed packages are the same on every platform.
native_package=libspdlog-dev

build_library() {
    mkdir -p "$stage/include" "$stage/share/cmake/spdlog"
    cp -a /usr/include/spdlog /usr/include/fmt "$stage/include/"
    # The package's own file names the native libraries.
    cat >"$stage/share/cmake/spdlog/spdlogConfig.cmake" <<'TEXT'
add_library(spdlog::spdlog INTERFACE IMPORTED)
set_target_properties(spdlog::spdlog PROPERTIES
  INTERFACE_COMPILE_DEFINITIONS "SPDLOG_FMT_EXTERNAL;FMT_HEADER_ONLY"
  INTERFACE_INCLUDE_DIRECTORIES "${CMAKE_CURRENT_LIST_DIR}/../../../include")
TEXT
}
