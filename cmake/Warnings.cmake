# cvt2_warnings: the warning level of all code of the project; a warning is an error.
add_library(cvt2_warnings INTERFACE)
target_compile_options(cvt2_warnings INTERFACE -Wall -Wextra -Wshadow -Wconversion -Werror)
# At -O3 g++ 12 takes the joining of a text and a string for a copy onto itself: bug 105651 of that compiler.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(cvt2_warnings INTERFACE $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-Wno-restrict>)
endif()
