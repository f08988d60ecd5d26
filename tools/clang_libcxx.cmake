# A second compiler with a second standard library: what one of them lets pass the other one may not.
# Its standard library checks what is asked of it, too. A Mac's own compiler is of this kind anyway.
if(CMAKE_HOST_SYSTEM_NAME STREQUAL "Linux")
  set(CMAKE_CXX_COMPILER clang++-19)
  set(CMAKE_CXX_FLAGS_INIT
    "-stdlib=libc++ -D_LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_DEBUG")
  set(CMAKE_EXE_LINKER_FLAGS_INIT "-stdlib=libc++")
  # Libraries in C++ that this system has packaged are of the other standard library.
  set(CALL_MONITOR_LIBCXX ON)
endif()
