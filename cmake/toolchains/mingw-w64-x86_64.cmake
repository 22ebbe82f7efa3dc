# Cross-compiles for Windows x64 on Linux with Debian's mingw-w64 compilers. Uses the variant with
# POSIX threads, which std::thread and std::mutex require. Qt's code generators (moc, ...) are those
# of the host's Qt, which must have the same version.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10 or Windows Server 2016.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")

# Each binary contains the compiler's runtime. As DLLs with their usual names, they could be replaced
# by those of the host program. Exceptions still cross from one binary to another, because the system
# unwinds the stack and types are compared by name.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

set(QT_HOST_PATH /usr CACHE PATH "The host's Qt, for its code generators")
execute_process(COMMAND gcc -print-multiarch OUTPUT_VARIABLE quorin_host_triplet
                OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${quorin_host_triplet}/cmake" CACHE PATH
    "CMake packages of the host's Qt")

# Finds libraries, headers and packages for the target only, and programs on the host only.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian's 64-bit Wine package installs no program in a folder of PATH.
find_program(QUORIN_WINE NAMES wine64 wine64-stable PATHS /usr/lib/wine)
if(QUORIN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${QUORIN_WINE}")
endif()
