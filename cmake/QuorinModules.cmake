# A module is a folder below src/. It is built as the static library quorin_<name> and the unit test
# program <name>_test.
#
#   quorin_module(<name> [MOC] SOURCES <file>... [TESTS <file>...] [PUBLIC_LINKS <target>...]
#                 [LINKS <target>...] [TEST_LINKS <target>...])
#
# PUBLIC_LINKS are the libraries whose headers the headers of the module include. MOC is for modules
# that declare a Q_OBJECT.
function(quorin_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "MOC" "" "SOURCES;TESTS;PUBLIC_LINKS;LINKS;TEST_LINKS")
  add_library(quorin_${name} STATIC ${module_SOURCES})
  target_include_directories(quorin_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(quorin_${name}
    PUBLIC ${module_PUBLIC_LINKS} PRIVATE ${module_LINKS} quorin_compile)
  set_target_properties(quorin_${name} PROPERTIES AUTOMOC ${module_MOC})
  if(module_TESTS)
    quorin_test(${name}_test SOURCES ${module_TESTS} LINKS quorin_${name} ${module_TEST_LINKS})
  endif()
endfunction()

# Compiles a target that only tests use with less optimization than the product, and without the
# undefined-behaviour sanitizer: its code need not be fast, and GCC compiles it in half the time. The
# tests link to the product's libraries as they are shipped.
function(quorin_compile_for_tests target)
  set_target_properties(${target} PROPERTIES QUORIN_ONLY_FOR_TESTS ON)
  if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT MSVC)
    target_compile_options(${target} PRIVATE -O1)
  endif()
  if(QUORIN_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# Precompiled for the test programs that use the test support library: they compile in half the time.
# The product is compiled without, so that a missing include is noticed. A program, since objects for
# programs are compiled with options of their own.
if(BUILD_TESTING)
  file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/quorin_test_headers.cpp"
       CONTENT "int main() {}\n" @ONLY)
  add_executable(quorin_test_headers "${CMAKE_BINARY_DIR}/quorin_test_headers.cpp")
  target_link_libraries(quorin_test_headers PRIVATE Qt6::Network GTest::gmock quorin_compile)
  set_target_properties(quorin_test_headers PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  quorin_compile_for_tests(quorin_test_headers)
  target_precompile_headers(quorin_test_headers PRIVATE
    <gmock/gmock.h> <gtest/gtest.h>
    <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QProcess> <QSslSocket> <QString>
    <QStringList> <QTcpServer> <QTemporaryDir> <QThreadPool>
    <chrono> <functional> <memory> <optional> <string> <thread> <vector>)
endif()

# quorin_test(<name> SOURCES <file>... [LINKS <target>...] [FOLDER <name>]
#             [PROPERTIES <ctest property> <value>...])
#
# Adds a GoogleTest program, in FOLDER below the folder of the tests. Each of its tests becomes a
# CTest test. On Windows the program becomes a single CTest test, because starting a process for each
# test would take too long.
function(quorin_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "FOLDER" "SOURCES;LINKS;PROPERTIES")
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(${name} ${test_SOURCES})
  quorin_compile_for_tests(${name})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/${test_FOLDER}")
  target_link_libraries(${name} PRIVATE ${test_LINKS} GTest::gmock GTest::gtest_main quorin_compile)
  if(test_LINKS MATCHES "quorin_(test|unit)_support")
    target_precompile_headers(${name} REUSE_FROM quorin_test_headers)
  endif()
  if(WIN32)
    if(CMAKE_CROSSCOMPILING_EMULATOR)
      set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
        "${PROJECT_SOURCE_DIR}/scripts/in-wine-prefix;${CMAKE_CROSSCOMPILING_EMULATOR}")
    endif()
    add_test(NAME ${name} COMMAND ${name})
    if(test_PROPERTIES)
      set_tests_properties(${name} PROPERTIES ${test_PROPERTIES})
    endif()
  else()
    include(GoogleTest)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${test_PROPERTIES})
  endif()
endfunction()
