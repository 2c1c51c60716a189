# context_delta_library(NAME SOURCES ... HEADERS ... [PRIVATE_HEADERS ...] [USES ...] [PRIVATE_USES ...])
#
# One target per folder of src/. Headers are included by their path below src/, yet a target sees
# only the headers of the targets it uses: each target publishes a folder of links to its own
# HEADERS, so an include that points up the layers does not compile.
# USES: targets whose headers our own headers include. PRIVATE_USES: all others.
function(context_delta_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;HEADERS;PRIVATE_HEADERS;USES;PRIVATE_USES" ${ARGN})
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
  set(view ${PROJECT_BINARY_DIR}/include/${name})
  context_delta_link_headers(${view}/public ${folder} "${arg_HEADERS}")
  context_delta_link_headers(${view}/private ${folder} "${arg_PRIVATE_HEADERS}")
  if(arg_SOURCES)
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC ${view}/public PRIVATE ${view}/private)
    target_link_libraries(${name} PUBLIC ${arg_USES}
      PRIVATE ${arg_PRIVATE_USES} context_delta_warnings)
    context_delta_reuse_precompiled(${name} precompiled_headers)
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${view}/public)
    target_link_libraries(${name} INTERFACE ${arg_USES})
  endif()
endfunction()

function(context_delta_link_headers view folder headers)
  file(REMOVE_RECURSE ${view})
  file(MAKE_DIRECTORY ${view}/${folder})
  foreach(header IN LISTS headers)
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${view}/${folder}/${header} SYMBOLIC)
  endforeach()
endfunction()
