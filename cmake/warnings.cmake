# Warnings are errors for our own code; third-party sources are compiled without any.
add_library(context_delta_warnings INTERFACE)
target_compile_options(context_delta_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # False alarms on std::string's operator+ in optimised builds.
  target_compile_options(context_delta_warnings INTERFACE -Wno-restrict)
endif()

if(CONTEXT_DELTA_SANITIZE)
  add_compile_options(-fsanitize=${CONTEXT_DELTA_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all -O1)
  add_link_options(-fsanitize=${CONTEXT_DELTA_SANITIZE})
  add_compile_definitions(CONTEXT_DELTA_SANITIZED)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # False alarms on temporaries of std::variant between the sanitizers' checks.
    target_compile_options(context_delta_warnings INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
