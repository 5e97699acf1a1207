# cvt2_warnings: the warning level of all code of the project; a warning is an error.
add_library(cvt2_warnings INTERFACE)
target_compile_options(cvt2_warnings INTERFACE -Wall -Wextra -Wshadow -Wconversion -Werror)
