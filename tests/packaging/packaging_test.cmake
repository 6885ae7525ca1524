# Installs a build, moves the installed tree, builds a consumer against it by the CMake package and
# by pkg-config, and runs both: the root they find must be the moved prefix. A second one links the
# operators of zel::mem_new from there and checks that they count. The installed libraries are searched for next to each
# other, nowhere else.
#
# Given: BUILD_DIR, SOURCE_DIR (of the consumer), WORK_DIR, CXX, TOOLCHAIN_FILE, EMULATOR, IS_WINDOWS, READELF.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# run_installed(<executable> <variable>): with the installed libraries; the variable receives its output.
function(run_installed executable variable)
  if(IS_WINDOWS)
    set(ENV{WINEPATH} "Z:${prefix}/bin")
    set(ENV{WINEDEBUG} -all)
  else()
    set(ENV{LD_LIBRARY_PATH} "${prefix}/lib")
  endif()
  execute_process(COMMAND ${EMULATOR} "${executable}" OUTPUT_VARIABLE output ECHO_OUTPUT_VARIABLE
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  unset(ENV{LD_LIBRARY_PATH})
  set(${variable} "${output}" PARENT_SCOPE)
endfunction()

# expect_root(<executable>)
function(expect_root executable)
  run_installed("${executable}" root)
  # Paths are lower case on Windows, and begin with a drive.
  string(TOLOWER "${prefix}/" expected)
  string(TOLOWER "${root}" found)
  string(REGEX REPLACE "^z:" "" found "${found}")
  if(NOT found STREQUAL expected)
    message(FATAL_ERROR "${executable} finds the root '${root}', expected '${prefix}/'")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
set(prefix "${WORK_DIR}/moved")
file(RENAME "${WORK_DIR}/installed" "${prefix}")
if(NOT IS_WINDOWS)
  run("${CMAKE_COMMAND}" "-DDIRECTORY=${prefix}" "-DREADELF=${READELF}"
    -P "${CMAKE_CURRENT_LIST_DIR}/search_paths_test.cmake")
endif()

set(toolchain "")
if(TOOLCHAIN_FILE)
  set(toolchain "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}")
endif()
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/by-package" -G Ninja ${toolchain}
  "-Dzel_DIR=${prefix}/lib/cmake/zel")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/by-package")
if(IS_WINDOWS)
  set(suffix .exe)
endif()
expect_root("${WORK_DIR}/by-package/consumer${suffix}")
run_installed("${WORK_DIR}/by-package/counting${suffix}" output)

set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
execute_process(COMMAND pkg-config --cflags --libs zel OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run("${CXX}" -std=c++17 -Wall -Wextra -Werror -o "${WORK_DIR}/by-pkg-config${suffix}" "${SOURCE_DIR}/consumer.cpp" ${flags})
expect_root("${WORK_DIR}/by-pkg-config${suffix}")
