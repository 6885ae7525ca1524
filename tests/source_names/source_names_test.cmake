# Compiles two sources for each room and looks into the assembly for the names that __FILE__ has given:
#
#   a probe that claims to lie in the room, for the rooms without an internal error too
#   the first source of the room that reports an internal error, where there is one
#
# A name is that of the library and the file, "gen/gen_time.cpp", without the room and with no path before it.
#
#   COMPILER      the compiler
#   OPTIONS_FILE  the options of the project, one on a line
#   SOURCE_DIR    the root of the sources
#   ROOMS         the folders of the rooms, separated by blanks
#   WORK_DIR      where to write
file(STRINGS "${OPTIONS_FILE}" options)
separate_arguments(rooms UNIX_COMMAND "${ROOMS}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(faults 0)

# Compiles a source and compares the names of sources among its texts with the only one that is expected.
function(check_names source expected)
  execute_process(COMMAND "${COMPILER}" ${options} -std=c++17 -w -Wno-error -O1 -S -o "${WORK_DIR}/assembly.s" "${source}"
                  RESULT_VARIABLE status ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${COMPILER} doesn't compile ${source}:\n${errors}")
  endif()
  file(STRINGS "${WORK_DIR}/assembly.s" texts REGEX "\\.(string|asciz|ascii)[ \t]+\"[^\"]*\\.cpp(\\\\0)?\"")
  list(TRANSFORM texts REPLACE "^[^\"]*\"([^\"]*\\.cpp)(\\\\0)?\".*$" "\\1")
  list(REMOVE_DUPLICATES texts)
  if(NOT texts STREQUAL expected)
    message(SEND_ERROR "${source} names itself \"${texts}\", expected \"${expected}\"")
    math(EXPR faults "${faults} + 1")
    set(faults ${faults} PARENT_SCOPE)
  endif()
endfunction()

set(real_sources 0)
foreach(room IN LISTS rooms)
  get_filename_component(library "${room}" DIRECTORY)
  file(WRITE "${WORK_DIR}/probe.cpp"
    "#line 1 \"${SOURCE_DIR}/${room}/zel_probe.cpp\"\nextern char const name[];\nchar const name[] = __FILE__;\n")
  check_names("${WORK_DIR}/probe.cpp" "${library}/zel_probe.cpp")

  file(GLOB sources "${SOURCE_DIR}/${room}/*.cpp")
  foreach(source IN LISTS sources)
    file(STRINGS "${source}" reports REGEX "GEN_ASSERT\\(|__FILE__")
    if(reports)
      get_filename_component(name "${source}" NAME)
      check_names("${source}" "${library}/${name}")
      message(STATUS "${room}: ${name}")
      math(EXPR real_sources "${real_sources} + 1")
      break()
    endif()
  endforeach()
endforeach()
if(real_sources EQUAL 0)
  message(SEND_ERROR "no source reports an internal error")
endif()
message(STATUS "${faults} wrong names")
