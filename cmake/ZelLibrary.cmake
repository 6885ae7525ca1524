# zel_add_library(<short name> SOURCES <file>... [OS_SOURCES <file>...] [PUBLIC <target>...] [PRIVATE <target>...])
#
# Makes the shared library zel_<name>, its alias zel::<name> and the object library zel_<name>_objects with the SOURCES,
# from which tests link a second library over fakes. OS_SOURCES are the sources that such a fake replaces, and are
# compiled into the shipped library alone: the operating-system layer, and in zel_mem also the memory figures above it. A
# source in os/ that no fake replaces is among the SOURCES.
function(zel_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;OS_SOURCES;PUBLIC;PRIVATE" ${ARGN})
  set(target zel_${name})
  string(TOUPPER ${name} upper)

  add_library(${target}_objects OBJECT ${ARG_SOURCES})
  target_include_directories(${target}_objects
    PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/h>" PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_definitions(${target}_objects PRIVATE ZEL_${upper}_BUILD)
  target_link_libraries(${target}_objects PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} zel_options)

  zel_add_shared_library(${target} ${name}
    OBJECTS ${target}_objects SOURCES ${ARG_OS_SOURCES} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
  add_library(zel::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  set_property(GLOBAL APPEND PROPERTY ZEL_INSTALLED_TARGETS ${target})
endfunction()

# zel_add_shared_library(<target> <short name> OBJECTS <object library> SOURCES <file>...
#                        [PUBLIC <target>...] [PRIVATE <target>...])
#
# Links one shared library from objects made by zel_add_library and further sources, and what these use of zel_sys.
function(zel_add_shared_library target name)
  cmake_parse_arguments(ARG "" "" "OBJECTS;SOURCES;PUBLIC;PRIVATE" ${ARGN})
  string(TOUPPER ${name} upper)
  add_library(${target} SHARED ${ARG_SOURCES})
  foreach(objects ${ARG_OBJECTS})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
  endforeach()
  target_include_directories(${target}
    PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/h>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
    PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_definitions(${target} PRIVATE ZEL_${upper}_BUILD)
  target_link_libraries(${target} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} zel_sys $<BUILD_INTERFACE:zel_options>)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  elseif(ZEL_COVERAGE)
    # Exported, for the end of a process in the tests (tests/support/coverage_exit_linux.cpp).
    target_link_options(${target} PRIVATE LINKER:-u,__gcov_dump)
  else()
    # Templates of the standard library and of Boost stay inside. A library calls its own functions directly.
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions
      "-Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/zel_${name}.map")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/zel_${name}.map")
  endif()
endfunction()

# zel_link_libraries_into(<directory> <short name>...): makes links to libraries of the build in a directory below theirs,
# so that the executables in that directory find them there. Nothing to do on Windows, where the environment names the
# directory of the libraries.
function(zel_link_libraries_into directory)
  if(WIN32)
    return()
  endif()
  set(links "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${directory}")
  file(MAKE_DIRECTORY "${links}")
  foreach(name IN LISTS ARGN)
    set(file "libzel_${name}.so.${PROJECT_VERSION_MAJOR}")
    file(CREATE_LINK "../${file}" "${links}/${file}" SYMBOLIC)
  endforeach()
endfunction()
