# Windows x64 from Linux: Debian's mingw-w64 compilers with POSIX threads, which std::thread and
# std::mutex require. Qt's code generators (moc, ...) come from the host's Qt, which must have the
# same version.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10 and Windows Server 2016.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")

set(QT_HOST_PATH /usr CACHE PATH "The host's Qt, for its code generators")
execute_process(COMMAND gcc -print-multiarch OUTPUT_VARIABLE quorin_host_triplet
                OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${quorin_host_triplet}/cmake" CACHE PATH
    "CMake packages of the host's Qt")

# Libraries, headers and packages are searched for only in the target's folders, programs only on
# the host.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian's wine64 package does not install a program to the PATH.
find_program(QUORIN_WINE NAMES wine64 wine64-stable PATHS /usr/lib/wine)
if(QUORIN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${QUORIN_WINE}")
endif()
