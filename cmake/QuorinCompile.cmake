# Compiler and linker options of all targets: language standard, warnings, hardening, sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC OFF) # enabled only for modules that declare a Q_OBJECT

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

# All programs and libraries of a build are in one folder.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

include(CheckPIESupported)
check_pie_supported()

# Every target links to this interface library.
add_library(quorin_compile INTERFACE)
target_compile_definitions(quorin_compile INTERFACE
  QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
  QT_DISABLE_DEPRECATED_BEFORE=0x060400
  QT_USE_QSTRINGBUILDER QUORIN_VERSION="${PROJECT_VERSION}")

if(MSVC)
  target_compile_options(quorin_compile INTERFACE /W4 /permissive- /utf-8 /guard:cf)
  target_link_options(quorin_compile INTERFACE /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT)
else()
  target_compile_options(quorin_compile INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
    $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
    -fstack-protector-strong)
  # libstdc++ ends the process if a precondition is violated, such as reading an empty
  # std::optional.
  target_compile_definitions(quorin_compile INTERFACE _GLIBCXX_ASSERTIONS)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # These versions report false overlaps in std::string when they optimize.
    target_compile_options(quorin_compile INTERFACE -Wno-restrict)
  endif()
  if(NOT QUORIN_SANITIZE AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(quorin_compile INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
  if(MINGW AND CMAKE_BUILD_TYPE STREQUAL "Release")
    # Functions and line numbers for the archive with debug information; the packages are stripped.
    # Tests do without, which keeps their programs small.
    set(is_product $<NOT:$<BOOL:$<TARGET_PROPERTY:QUORIN_ONLY_FOR_TESTS>>>)
    target_compile_options(quorin_compile INTERFACE
      $<${is_product}:-g1> "$<${is_product}:-fdebug-prefix-map=${PROJECT_SOURCE_DIR}/=>")
  endif()
  if(WIN32)
    target_link_options(quorin_compile INTERFACE
      -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat)
    # Windows has no library with the functions of the stack protector. Linked statically to avoid
    # another DLL.
    target_link_libraries(quorin_compile INTERFACE -l:libssp.a)
  else()
    target_link_options(quorin_compile INTERFACE -Wl,-z,relro -Wl,-z,now)
    if(NOT QUORIN_SANITIZE) # clang links the sanitizer runtime to programs only
      target_link_options(quorin_compile INTERFACE -Wl,--no-undefined)
    endif()
  endif()
endif()

# For tests of behaviour that a sanitizer changes.
set(quorin_is_sanitized false)
if(QUORIN_SANITIZE)
  set(quorin_is_sanitized true)
  target_compile_options(quorin_compile INTERFACE
    -fsanitize=${QUORIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quorin_compile INTERFACE -fsanitize=${QUORIN_SANITIZE})
endif()
if(QUORIN_FUZZ)
  # Coverage feedback for the code under test; only the fuzzers themselves link libFuzzer's main().
  target_compile_options(quorin_compile INTERFACE -fsanitize=fuzzer-no-link)
endif()
