# Compiles for macOS where there is no macOS, for one ARCHITECTURE, arm64 or x86_64, and for systems
# from OLDEST_SYSTEM on: with the system's C headers in DARWIN_HEADERS, this project's own
# declarations of the frameworks, and stubs of every library in STUB_ROOT.
#
# Nothing of the machine that compiles is on any path: a header or a library that is not named here
# is missing.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${ARCHITECTURE})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES
  ARCHITECTURE OLDEST_SYSTEM DARWIN_HEADERS STUB_ROOT)

get_filename_component(project_directory ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(llvm_directory /usr/lib/llvm-19)

set(CMAKE_CXX_COMPILER ${llvm_directory}/bin/clang++)
set(CMAKE_CXX_COMPILER_TARGET ${ARCHITECTURE}-apple-macos${OLDEST_SYSTEM})
set(CMAKE_AR ${llvm_directory}/bin/llvm-ar)
set(CMAKE_RANLIB ${llvm_directory}/bin/llvm-ranlib)
set(CMAKE_INSTALL_NAME_TOOL ${llvm_directory}/bin/llvm-install-name-tool)
set(CMAKE_OSX_SYSROOT ${STUB_ROOT})
set(CMAKE_OSX_DEPLOYMENT_TARGET ${OLDEST_SYSTEM}.0)
set(CMAKE_OSX_ARCHITECTURES ${ARCHITECTURE})

set(header_architecture ${ARCHITECTURE})
if(ARCHITECTURE STREQUAL "arm64")
  set(header_architecture aarch64)
endif()
# Each room's headers include the next one's by `#include_next`: this is an order.
set(header_directories
  ${CMAKE_CURRENT_LIST_DIR}/include
  ${llvm_directory}/include/c++/v1
  ${llvm_directory}/lib/clang/19/include
  ${DARWIN_HEADERS}/${header_architecture}-macos.${OLDEST_SYSTEM}-none
  ${DARWIN_HEADERS}/any-macos.${OLDEST_SYSTEM}-any
  ${DARWIN_HEADERS}/any-macos-any
  ${project_directory}/tests/macos/include)
list(JOIN header_directories "\" -isystem \"" header_flags)
# The names of ICU's functions end in its version unless told otherwise.
set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc -nostdinc++ -isystem \"${header_flags}\" -DU_DISABLE_RENAMING=1")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld")

# The libraries that the program is built with, as if they were this system's.
set(ENV{PKG_CONFIG_LIBDIR} ${STUB_ROOT}/usr/lib/pkgconfig)
set(nlohmann_json_DIR ${STUB_ROOT}/usr/lib/cmake/nlohmann_json)
