# What every target of the project shares: language level, warnings, where results go.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Functions and lines are what a stack trace needs; types and variables cost a quarter of the whole build. Who wants to
# look at them in a debugger configures with -DCMAKE_CXX_FLAGS=-g.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-g1")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

option(TAVRIX_SANITIZE "Address and undefined behaviour sanitizers" OFF)
option(TAVRIX_FUZZ "Fuzz targets for libFuzzer, which clang brings" OFF)

add_library(tavrix_options INTERFACE)
target_compile_options(tavrix_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -fvisibility=hidden)
target_include_directories(tavrix_options INTERFACE ${PROJECT_SOURCE_DIR})
if(TAVRIX_SANITIZE)
  # A null pointer stops the address sanitizer as well, and this processor reads at any address: asking at every access
  # costs a sixth of the compiler's time.
  target_compile_options(tavrix_options INTERFACE -fsanitize=address,undefined -fno-sanitize=null,alignment
    -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(tavrix_options INTERFACE -fsanitize=address,undefined)
endif()
if(CMAKE_UNITY_BUILD)
  # Files compiled as one see each other's names; whether a file hides its own is the other doors' to say.
  target_compile_options(tavrix_options INTERFACE -Wno-shadow)
endif()
if(TAVRIX_FUZZ)
  target_compile_options(tavrix_options INTERFACE -fsanitize=fuzzer-no-link -O1)
endif()
if(NOT TAVRIX_SANITIZE)
  # A build knows no folder of its machine: the same commit gives the same bytes wherever it was checked out.
  target_compile_options(tavrix_options INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    $<$<BOOL:${TAVRIX_WINDOWS_PREFIX}>:-ffile-prefix-map=${TAVRIX_WINDOWS_PREFIX}=libraries>)
  # Hostile mail, XML and PDF come this way: what overwrites a buffer ends the program instead of going on.
  target_compile_options(tavrix_options INTERFACE -fstack-protector-strong -D_FORTIFY_SOURCE=2)
  target_link_options(tavrix_options INTERFACE -fstack-protector-strong)
  if(NOT WIN32)
    set(CMAKE_EXE_LINKER_FLAGS "${CMAKE_EXE_LINKER_FLAGS} -pie -Wl,-z,relro,-z,now")
  endif()
endif()
if(WIN32)
  # Windows 7 SP1 is the oldest system; nothing newer may be imported.
  target_compile_definitions(tavrix_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0601 WINVER=0x0601)
  # A function that nothing calls, ours or a library's, stays out of the host's process.
  target_compile_options(tavrix_options INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(tavrix_options INTERFACE -static -Wl,--gc-sections -Wl,--no-insert-timestamp)
  # Brings the system libraries along that a static OpenSSL needs.
  set(OPENSSL_USE_STATIC_LIBS ON)
endif()

# tavrix_layer(name SOURCES file... [LINK library...]): one folder, one static library.
# The libraries a layer links are the only layers it may include (tools/check_layers.py checks the includes).
function(tavrix_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;LINK" ${ARGN})
  add_library(tavrix_${name} STATIC ${LAYER_SOURCES})
  target_link_libraries(tavrix_${name} PUBLIC tavrix_options ${LAYER_LINK})
endfunction()
