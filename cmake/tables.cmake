# context_delta_tables(TARGET FILE): makes the header FILE.h (in the namespace of the folder's
# language) of the plain text FILE.txt and lets TARGET include it by its path below src/.
function(context_delta_tables target name)
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
  get_filename_component(language ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(text ${CMAKE_CURRENT_SOURCE_DIR}/${name}.txt)
  set(header ${PROJECT_BINARY_DIR}/tables/${folder}/${name}.h)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/tables/${folder})
  add_custom_command(OUTPUT ${header}
    COMMAND tables_to_header ${text} ${header} context_delta::indexer::${language}
    DEPENDS ${text} tables_to_header
    VERBATIM)
  target_sources(${target} PRIVATE ${header})
  target_include_directories(${target} PUBLIC ${PROJECT_BINARY_DIR}/tables)
endfunction()
