# The headers that most files include, compiled once. Only the presets that build the tests do so:
# the release build has none, so a file that forgets an include still fails there.
option(CONTEXT_DELTA_PRECOMPILED_HEADERS "Compile common headers once" OFF)
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES ccache)
  # A compiler cache serves every folder, but not with headers that were compiled in one of them.
  set(CONTEXT_DELTA_PRECOMPILED_HEADERS OFF)
endif()

set(context_delta_common_headers <algorithm> <array> <charconv> <cstdint> <filesystem> <functional>
  <map> <memory> <optional> <span> <stdexcept> <string> <string_view> <unordered_map>
  <unordered_set> <utility> <vector>)

# context_delta_precompile(NAME [EXECUTABLE] [HEADERS ...] [USES ...]): a target that holds the common headers
# and HEADERS, compiled as the targets are that reuse them.
function(context_delta_precompile name)
  cmake_parse_arguments(arg "EXECUTABLE" "" "HEADERS;USES" ${ARGN})
  if(NOT CONTEXT_DELTA_PRECOMPILED_HEADERS)
    return()
  endif()
  set(source ${PROJECT_BINARY_DIR}/${name}.cc)
  file(CONFIGURE OUTPUT ${source} CONTENT "int main() { return 0; }\n")
  if(arg_EXECUTABLE)
    add_executable(${name} EXCLUDE_FROM_ALL ${source})
  else()
    add_library(${name} STATIC EXCLUDE_FROM_ALL ${source})
  endif()
  target_link_libraries(${name} PRIVATE ${arg_USES} context_delta_warnings)
  target_precompile_headers(${name} PRIVATE ${context_delta_common_headers} ${arg_HEADERS})
endfunction()

# context_delta_reuse_precompiled(TARGET NAME)
function(context_delta_reuse_precompiled target name)
  if(CONTEXT_DELTA_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} REUSE_FROM ${name})
  endif()
endfunction()
