# That check_sources.cmake finds what it is there to find: each fault is put alone into a small
# tree that is in order otherwise.
#
#   cmake -D SCRATCH=<folder> -P check_sources_test.cmake

cmake_minimum_required(VERSION 3.25)

set(checker "${CMAKE_CURRENT_LIST_DIR}/check_sources.cmake")

function(make_tree)
  file(REMOVE_RECURSE "${SCRATCH}")
  file(WRITE "${SCRATCH}/src/config/element_names.h"
    "inline constexpr const char* kPort = \"Port\";\n")
  file(WRITE "${SCRATCH}/packaging/settings.xml" "<Port>1</Port>\n")
  file(WRITE "${SCRATCH}/docs/settings.md" "| `Port` |\n")
  file(WRITE "${SCRATCH}/src/worker/worker.h" "#include \"worker/routing.h\"\n")
  file(WRITE "${SCRATCH}/src/worker/worker.cpp"
    "#include \"worker/worker.h\"\n#include \"platform/folders.h\"\n#include <QFile>\n")
  file(WRITE "${SCRATCH}/src/platform/folders.h" "#ifdef NDEBUG\n#endif\n")
  file(WRITE "${SCRATCH}/src/platform/unix/folders.cpp"
    "#include \"platform/folders.h\"\n#include <unistd.h>\n#ifdef __linux__\n#endif\n")
  file(WRITE "${SCRATCH}/host/control.h" "")
  file(WRITE "${SCRATCH}/host/control.cpp" "#include \"control.h\"\n")
  file(WRITE "${SCRATCH}/src/http/a_test.cpp" "#include \"support/print.h\"\n")
endfunction()

function(run_checker result_out output_out)
  execute_process(COMMAND "${CMAKE_COMMAND}" -D "TREE=${SCRATCH}" -P "${checker}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(${result_out} "${result}" PARENT_SCOPE)
  set(${output_out} "${output}" PARENT_SCOPE)
endfunction()

# expect_finding(<file> <content> <text of the finding>)
function(expect_finding file content text)
  make_tree()
  file(WRITE "${SCRATCH}/${file}" "${content}")
  run_checker(result output)
  string(FIND "${output}" "${text}" position)
  string(FIND "${output}" " 1 findings" alone)
  if(result EQUAL 0 OR position EQUAL -1 OR alone EQUAL -1)
    message(SEND_ERROR "expected \"${text}\" and nothing else, result ${result}:\n${output}")
  endif()
endfunction()

make_tree()
run_checker(result output)
if(NOT result EQUAL 0)
  message(SEND_ERROR "a tree in order was found fault with:\n${output}")
endif()

expect_finding(src/http/a.cpp "#include \"worker/worker.h\"\n" "http does not know worker")
expect_finding(src/worker/a.h "#include \"server/tcp_server.h\"\n" "worker does not know server")
expect_finding(host/main.cpp "#include \"entry/main_func.h\"\n" "host does not know entry")
expect_finding(src/json/a.cpp "#include \"a.h\"\n" "without its room")
expect_finding(src/tools/a.cpp "" "src/tools/a.cpp is in no room")
expect_finding(src/worker/download.cpp "#include \"worker/routing.h\"\n" "stands before it")
expect_finding(src/worker/reply.h "#include \"worker/download.h\"\n" "stands before it")
expect_finding(src/server/a.cpp "#include <windows.h>\n" "knows its system: #include <windows.h>")
expect_finding(src/platform/a.cpp "#  include <sys/stat.h>\n" "src/platform/a.cpp knows its system")
expect_finding(host/main.cpp "#ifdef _WIN32\n#endif\n" "host/main.cpp knows its system")
expect_finding(src/log/a.h "#if !defined(Q_OS_UNIX)\n#endif\n" "src/log/a.h knows its system")
expect_finding(src/worker/worker.cpp "#include <QFile>\n#include \"worker/worker.h\"\n"
  "src/worker/worker.cpp does not include \"worker/worker.h\" first")
expect_finding(src/platform/windows/folders.cpp "#include <windows.h>\n"
  "does not include \"platform/folders.h\" first")
expect_finding(docs/settings.md "Port\n" "docs/settings.md does not name `Port`")
expect_finding(packaging/settings.xml "<!-- Port -->\n" "packaging/settings.xml does not name <Port>")
