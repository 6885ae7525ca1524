# Whether an executable of Windows has the manifest with which its narrow text is UTF-8:
#
#   cmake -DFILE=<executable> -P fitter_code_page_test.cmake
file(STRINGS "${FILE}" lines REGEX "<activeCodePage [^>]*>UTF-8</activeCodePage>")
if(NOT lines)
  message(FATAL_ERROR "${FILE} has no manifest with UTF-8 as its code page")
endif()
