# Warnings are errors for our own code; third-party sources are compiled without any.
add_library(context_delta_warnings INTERFACE)
target_compile_options(context_delta_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

if(CONTEXT_DELTA_SANITIZE)
  add_compile_options(-fsanitize=${CONTEXT_DELTA_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all -O1)
  add_link_options(-fsanitize=${CONTEXT_DELTA_SANITIZE})
endif()
