# zel_add_test(<name> [STATEFUL] [CUSTOMER] [UNSIGNED_CHAR] [UTF8] [THREADS] [DESCRIPTORS]
#              [LIBRARIES <target>...] [SOURCES <file>...] [OBJECTS <object library>...] [DEFINITIONS <definition>...]
#              [OPTIONS <compiler option>...] [DEPENDS <target>...] [LABEL <label>] [TIMEOUT <seconds>])
#
# Builds <name>_test from <name>_test.cpp of the calling directory.
#
#   STATEFUL       one ctest entry, and one process, for each TEST; otherwise one for the executable
#   CUSTOMER       built and run a second time against the version library of a release branch
#   UNSIGNED_CHAR  built and run a second time, on Linux, with a char that has no sign in the test and in the library
#   UTF8           built and run a second time, on Windows, with UTF-8 as the code page of narrow text
#   THREADS        also run under the thread sanitizer, which runs no other tests
#   DESCRIPTORS    on Linux, each TEST fails that ends with more open descriptors than it began with
#   SOURCES        further sources, from the project's root; OPTIONS and DEFINITIONS hold for them too
#   OBJECTS        object libraries that are linked into the executable
#   DEPENDS        targets that are built before, for a test that runs or loads them
function(zel_add_test name)
  cmake_parse_arguments(ARG "STATEFUL;CUSTOMER;UNSIGNED_CHAR;UTF8;THREADS;DESCRIPTORS" "LABEL;TIMEOUT"
    "LIBRARIES;SOURCES;OBJECTS;DEFINITIONS;OPTIONS;DEPENDS" ${ARGN})
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zel_add_test(${name}): unknown arguments ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  if(ZEL_SANITIZE STREQUAL "thread" AND NOT ARG_THREADS)
    return()
  endif()
  # Not on Windows, where the runtime makes handles at first uses, and keeps them.
  if(ARG_DESCRIPTORS AND NOT WIN32)
    list(APPEND ARG_SOURCES tests/support/descriptor_listener.cpp)
  endif()
  set(sources "${CMAKE_CURRENT_SOURCE_DIR}/${name}_test.cpp")
  foreach(source IN LISTS ARG_SOURCES)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
    list(APPEND sources "${source}")
  endforeach()

  zel_add_test_executable(${name}_test ${name})
  if(ARG_CUSTOMER)
    zel_add_test_executable(${name}_customer_test ${name}_customer)
    zel_use_customer_version(${name}_customer_test)
  endif()
  if(ARG_UTF8 AND WIN32)
    zel_add_test_executable(${name}_utf8_test ${name}_utf8)
    zel_use_utf8_code_page(${name}_utf8_test)
  endif()
  if(ARG_UNSIGNED_CHAR AND ZEL_TEST_UNSIGNED_CHAR)
    list(TRANSFORM ARG_LIBRARIES REPLACE "^zel::gen$" zel_gen_unsigned_char)
    list(TRANSFORM ARG_OBJECTS APPEND _unsigned_char)
    zel_add_test_executable(${name}_unsigned_char_test ${name}_unsigned_char)
    target_compile_options(${name}_unsigned_char_test PRIVATE -funsigned-char)
  endif()
endfunction()

# Local to zel_add_test: one executable and its ctest entries.
macro(zel_add_test_executable target prefix)
  add_executable(${target} ${sources})
  target_compile_definitions(${target} PRIVATE ${ARG_DEFINITIONS})
  target_compile_options(${target} PRIVATE ${ARG_OPTIONS})
  target_link_libraries(${target} PRIVATE
    ${ARG_OBJECTS} ${ARG_LIBRARIES} zel_test_support GTest::gmock_main zel_options)
  if(ARG_DEPENDS)
    add_dependencies(${target} ${ARG_DEPENDS})
  endif()
  set(properties TIMEOUT 120)
  if(ARG_TIMEOUT)
    set(properties TIMEOUT ${ARG_TIMEOUT})
  endif()
  if(ARG_THREADS)
    list(APPEND properties LABELS threads)
  elseif(ARG_LABEL)
    list(APPEND properties LABELS ${ARG_LABEL})
  endif()
  if(ARG_STATEFUL)
    gtest_discover_tests(${target} TEST_PREFIX "${prefix}." DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
  else()
    add_test(NAME ${prefix} COMMAND ${target})
    set_tests_properties(${prefix} PROPERTIES ${properties})
  endif()
endmacro()

# zel_use_customer_version(<executable>): runs it over the version library of a release branch, which lies next to
# the executable.
function(zel_use_customer_version target)
  target_compile_definitions(${target} PRIVATE ZEL_CUSTOMER_TEST)
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/customer")
  if(WIN32)
    target_link_libraries(${target} PRIVATE zel_ver_customer)
  else()
    # Needed by the executable itself, before the library that it replaces. Not as a linked target: CMake would look for
    # a search path that serves both.
    target_link_options(${target} PRIVATE "LINKER:--no-as-needed,$<TARGET_LINKER_FILE:zel_ver_customer>")
    add_dependencies(${target} zel_ver_customer)
    zel_link_libraries_into(customer err thr fio mem gen mem_fake gen_fake)
  endif()
endfunction()
