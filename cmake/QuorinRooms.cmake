# A room is a folder below src/: a static library quorin_<name>, and the tests that stand beside
# its files as one program <name>_test.
#
#   quorin_room(<name> [MOC] SOURCES <file>... [TESTS <file>...] [LINKS <target>...]
#               [TEST_LINKS <target>...])
#
# LINKS are public: a room that knows another passes it on. MOC is for rooms that declare a
# Q_OBJECT.
function(quorin_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "MOC" "" "SOURCES;TESTS;LINKS;TEST_LINKS")
  add_library(quorin_${name} STATIC ${room_SOURCES})
  target_include_directories(quorin_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(quorin_${name} PUBLIC ${room_LINKS} PRIVATE quorin_compile)
  set_target_properties(quorin_${name} PROPERTIES AUTOMOC ${room_MOC})
  if(room_TESTS)
    quorin_test(${name}_test SOURCES ${room_TESTS} LINKS quorin_${name} ${room_TEST_LINKS})
  endif()
endfunction()

# quorin_test(<name> SOURCES <file>... [LINKS <target>...] [FOLDER <name>]
#             [PROPERTIES <ctest property> <value>...])
#
# FOLDER is the folder of the program below the tests' own.
# A GoogleTest program; each of its tests is one CTest test. For Windows the program as a whole is
# one: starting it once a test would take minutes, through the emulator of a cross build even more.
function(quorin_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "FOLDER" "SOURCES;LINKS;PROPERTIES")
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(${name} ${test_SOURCES})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests/${test_FOLDER}")
  target_link_libraries(${name} PRIVATE ${test_LINKS} GTest::gmock GTest::gtest_main quorin_compile)
  if(WIN32)
    add_test(NAME ${name} COMMAND ${name})
    if(test_PROPERTIES)
      set_tests_properties(${name} PROPERTIES ${test_PROPERTIES})
    endif()
  else()
    include(GoogleTest)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES ${test_PROPERTIES})
  endif()
endfunction()
