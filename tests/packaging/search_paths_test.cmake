# Each executable and each shared library below a directory is to have the search path $ORIGIN alone: the loader then takes
# the libraries that it needs, or that it is asked to load by name, from the directory of the file or from those of the
# system. An empty element would mean the current directory, where anybody may have put a library.
#
# Given: DIRECTORY, READELF.

file(GLOB_RECURSE files LIST_DIRECTORIES false "${DIRECTORY}/*")
set(count 0)
set(faults "")
foreach(file IN LISTS files)
  if(IS_SYMLINK "${file}")
    continue()
  endif()
  file(READ "${file}" magic LIMIT 4 HEX)
  if(NOT magic STREQUAL "7f454c46")
    continue()
  endif()
  execute_process(COMMAND "${READELF}" --dynamic --wide "${file}" OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[(](RPATH|RUNPATH)[)][^\n]*" paths "${dynamic}")
  if(NOT paths MATCHES "^[(]RUNPATH[)] +Library runpath: .[$]ORIGIN.$")
    list(JOIN paths ", " text)
    string(APPEND faults "\n  ${file}: ${text}")
  endif()
  math(EXPR count "${count} + 1")
endforeach()

if(count EQUAL 0)
  message(FATAL_ERROR "no executable and no library in ${DIRECTORY}")
endif()
if(faults)
  message(FATAL_ERROR "search paths other than $ORIGIN alone:${faults}")
endif()
message(STATUS "${count} files with the search path $ORIGIN alone")
