# The manual page, completions, documents and licences.

# context_delta_answer(FILE ARGUMENT ...): what the program prints, as a file of the build.
set(answers "")
function(context_delta_answer file)
  add_custom_command(OUTPUT ${file}
    COMMAND context-delta ${ARGN} > ${file}
    DEPENDS context-delta VERBATIM)
  set(answers ${answers} ${file} PARENT_SCOPE)
endfunction()

set(folder ${PROJECT_BINARY_DIR}/documents)
file(MAKE_DIRECTORY ${folder})
context_delta_answer(${folder}/context-delta.bash completion bash)
context_delta_answer(${folder}/_context-delta completion zsh)
context_delta_answer(${folder}/context-delta.fish completion fish)
context_delta_answer(${folder}/context-delta.1 manual)
add_custom_command(OUTPUT ${folder}/context-delta.1.gz
  COMMAND gzip -9nkf ${folder}/context-delta.1 DEPENDS ${folder}/context-delta.1 VERBATIM)
file(WRITE ${folder}/git-context-delta.1 ".so man1/context-delta.1\n")
add_custom_command(OUTPUT ${folder}/git-context-delta.1.gz
  COMMAND gzip -9nkf ${folder}/git-context-delta.1 VERBATIM)
add_custom_target(documents ALL DEPENDS ${answers} ${folder}/context-delta.1.gz
  ${folder}/git-context-delta.1.gz)

set(share ${CMAKE_INSTALL_DATADIR})
install(FILES ${folder}/context-delta.bash DESTINATION ${share}/bash-completion/completions
  RENAME context-delta COMPONENT program)
install(FILES ${folder}/_context-delta DESTINATION ${share}/zsh/vendor-completions
  COMPONENT program)
install(FILES ${folder}/context-delta.fish DESTINATION ${share}/fish/vendor_completions.d
  COMPONENT program)
install(FILES ${folder}/context-delta.1.gz ${folder}/git-context-delta.1.gz
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT program)
file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT program)
install(FILES ${documents} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT program)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT development)

include(copyright.cmake)
