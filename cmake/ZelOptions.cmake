# Compiler settings that hold for every target of the suite.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Executables and libraries share one directory: the installation root is its parent, as in an
# installed tree.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
# The loader looks for libraries next to the file that needs them, nowhere else. The same search path in the build as after
# the installation, since a build would pad a shorter one, and each empty element of it means the current directory.
set(CMAKE_INSTALL_RPATH "$ORIGIN")
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH OFF)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
# One level below the prefix, never an architecture subdirectory.
set(CMAKE_INSTALL_LIBDIR lib)
include(GNUInstallDirs)

find_package(Threads REQUIRED)

# The platform, by the word that ends the names of its sources: <library>_os_linux.cpp, <library>_os_windows.cpp.
if(WIN32)
  set(ZEL_PLATFORM windows)
else()
  set(ZEL_PLATFORM linux)
endif()

# The source that executes the CPUID instruction, or the one for processors without it.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
  set(ZEL_CPUID x86)
else()
  set(ZEL_CPUID none)
endif()

# Boost through a link of its own, so that no other header of the system leaks into a cross build.
find_path(ZEL_BOOST_INCLUDE_DIR boost/version.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(STRINGS "${ZEL_BOOST_INCLUDE_DIR}/boost/version.hpp" boost_version REGEX "define BOOST_VERSION ")
string(REGEX REPLACE "[^0-9]" "" boost_version "${boost_version}")
if(boost_version LESS 108100)
  message(FATAL_ERROR "Boost headers 1.81 or newer are needed, found ${boost_version} in ${ZEL_BOOST_INCLUDE_DIR}")
endif()
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/boost")
file(CREATE_LINK "${ZEL_BOOST_INCLUDE_DIR}/boost" "${PROJECT_BINARY_DIR}/boost/boost" SYMBOLIC)
add_library(zel_boost INTERFACE)
target_include_directories(zel_boost SYSTEM INTERFACE "${PROJECT_BINARY_DIR}/boost")

# zel_options: the compiler options of all sources of the project.
add_library(zel_options INTERFACE)
target_compile_options(zel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wcast-qual -Wformat=2 -Wno-format-nonliteral -Wundef -Werror
  # Floating-point steps are exact: no fused multiply-add.
  -ffp-contract=off
  # No path of the building machine: debug information and internal errors name a source from the project's root.
  "-fdebug-prefix-map=${PROJECT_SOURCE_DIR}/=" "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
# An internal error names its source without the room. Of several options that match, g++ takes the last and clang the
# longest.
file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/rooms.txt" ZEL_ROOMS REGEX "^room ")
list(TRANSFORM ZEL_ROOMS REPLACE "^room *[|] *([a-z/]+) .*" "\\1")
foreach(room IN LISTS ZEL_ROOMS)
  get_filename_component(library "${room}" DIRECTORY)
  target_compile_options(zel_options INTERFACE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/${room}/=${library}/")
endforeach()
if(WIN32)
  # Windows 7 and newer; narrow calls by name.
  target_compile_definitions(zel_options INTERFACE _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX __USE_MINGW_ANSI_STDIO=1)
else()
  # No exported function of ours is meant to be replaced by another library's: calls go straight.
  target_compile_options(zel_options INTERFACE -fno-semantic-interposition -fno-plt)
  # The search path of a library may be overridden by the environment.
  target_link_options(zel_options INTERFACE -Wl,--enable-new-dtags)
endif()

# zel_add_platform_header(<stem>): makes the header <stem>_platform.h, which includes <stem>_linux.h or
# <stem>_windows.h. For inline functions that are different on each platform; the stem is a path from the project's root.
function(zel_add_platform_header stem)
  file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/platform/${stem}_platform.h"
    CONTENT "#include \"${stem}_${ZEL_PLATFORM}.h\"\n")
endfunction()
target_include_directories(zel_options INTERFACE "${PROJECT_BINARY_DIR}/platform")

set(ZEL_SANITIZE "" CACHE STRING "Sanitizers of the build, for instance address,undefined")
if(ZEL_SANITIZE)
  add_compile_options("-fsanitize=${ZEL_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options("-fsanitize=${ZEL_SANITIZE}")
endif()
option(ZEL_FUZZ "Build the fuzz targets for libFuzzer; needs clang" OFF)
if(ZEL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
option(ZEL_COVERAGE "Instrument for coverage" OFF)
if(ZEL_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

if(WIN32)
  enable_language(RC)
  # The compiler's runtime libraries lie next to the executables, as in an installed tree.
  set(ZEL_RUNTIME_LIBRARIES "")
  foreach(runtime libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${runtime}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      find_file(ZEL_${runtime} ${runtime} PATHS /usr/x86_64-w64-mingw32/lib NO_CMAKE_FIND_ROOT_PATH REQUIRED)
      set(path "${ZEL_${runtime}}")
    endif()
    list(APPEND ZEL_RUNTIME_LIBRARIES "${path}")
  endforeach()
  file(COPY ${ZEL_RUNTIME_LIBRARIES} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" FOLLOW_SYMLINK_CHAIN)
endif()

# zel_use_utf8_code_page(<executable>): narrow text of the program is UTF-8 on Windows, whatever the code page of the
# system is. Systems before Windows 10, version 1903, ignore it. Has no effect on other platforms.
function(zel_use_utf8_code_page target)
  if(WIN32)
    target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/utf8.rc")
  endif()
endfunction()
