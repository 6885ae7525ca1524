# Installs a build, moves the installed tree, builds a consumer against it by the CMake package and
# by pkg-config, and runs both: the root they find must be the moved prefix.
#
# Given: BUILD_DIR, SOURCE_DIR (of the consumer), WORK_DIR, CXX, TOOLCHAIN_FILE, EMULATOR, IS_WINDOWS.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# expect_root(<executable>)
function(expect_root executable)
  if(IS_WINDOWS)
    set(ENV{WINEPATH} "Z:${prefix}/bin")
    set(ENV{WINEDEBUG} -all)
  else()
    set(ENV{LD_LIBRARY_PATH} "${prefix}/lib")
  endif()
  execute_process(COMMAND ${EMULATOR} "${executable}" OUTPUT_VARIABLE root OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  unset(ENV{LD_LIBRARY_PATH})
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

set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
execute_process(COMMAND pkg-config --cflags --libs zel OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run("${CXX}" -std=c++17 -o "${WORK_DIR}/by-pkg-config${suffix}" "${SOURCE_DIR}/consumer.cpp" ${flags})
expect_root("${WORK_DIR}/by-pkg-config${suffix}")
