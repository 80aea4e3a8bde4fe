# Cross-compiling the Windows automation servers with Debian's mingw-w64
# (64-bit). The -posix compilers give std::thread on the winpthreads runtime.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TOVIK_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${TOVIK_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TOVIK_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${TOVIK_MINGW_TRIPLE}-windres)
set(TOVIK_WIDL ${TOVIK_MINGW_TRIPLE}-widl)
set(TOVIK_WIDL_ARCH --win64)
set(CMAKE_FIND_ROOT_PATH /usr/${TOVIK_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
