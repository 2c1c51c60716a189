# The parser runtime and the grammars, compiled from the npm packages of package.json.
# They are targets of their own, built optimised in every preset and never again in a rebuild.
set(node_modules ${PROJECT_SOURCE_DIR}/node_modules)
if(NOT EXISTS ${node_modules}/tree-sitter/vendor/tree-sitter/lib/src/lib.c)
  message(FATAL_ERROR "the grammar packages are missing: run scripts/setup (or npm ci) first")
endif()

set(runtime ${node_modules}/tree-sitter/vendor/tree-sitter/lib)
add_library(tree_sitter STATIC ${runtime}/src/lib.c)
target_include_directories(tree_sitter SYSTEM PUBLIC ${runtime}/include PRIVATE ${runtime}/src)
target_compile_definitions(tree_sitter PRIVATE _DEFAULT_SOURCE _POSIX_C_SOURCE=200112L
  TREE_SITTER_HIDE_SYMBOLS)
# With exceptions: an allocation that goes too far is thrown out of it. The runtime is one
# translation unit: its functions can be inlined unless others may replace them.
target_compile_options(tree_sitter PRIVATE -w -O3 -fexceptions -fvisibility=hidden
  -fno-semantic-interposition)
set_target_properties(tree_sitter PROPERTIES C_STANDARD 11 EXPORT_COMPILE_COMMANDS OFF)

# context_delta_grammar(NAME FOLDER): the grammar in node_modules/FOLDER as target tree_sitter_NAME.
function(context_delta_grammar name folder)
  set(source ${node_modules}/${folder}/src)
  string(REGEX REPLACE "/.*" "" package ${folder})
  set_property(GLOBAL APPEND PROPERTY context_delta_grammar_packages ${package})
  set(files ${source}/parser.c)
  if(EXISTS ${source}/scanner.c)
    list(APPEND files ${source}/scanner.c)
  endif()
  add_library(tree_sitter_${name} STATIC ${files})
  target_include_directories(tree_sitter_${name} PRIVATE ${source})
  # Scanners share the allocator, so that what they hold goes with the parse; Python's asks the C
  # library for some of it.
  target_compile_definitions(tree_sitter_${name} PRIVATE TREE_SITTER_REUSE_ALLOCATOR)
  target_compile_options(tree_sitter_${name} PRIVATE -w -O2 -fexceptions
    "-Dcalloc(count,size)=ts_calloc(count,size)" "-Dfree(block)=ts_free(block)")
  target_link_libraries(tree_sitter_${name} PUBLIC tree_sitter)
  set_target_properties(tree_sitter_${name} PROPERTIES C_STANDARD 11 EXPORT_COMPILE_COMMANDS OFF)
endfunction()
