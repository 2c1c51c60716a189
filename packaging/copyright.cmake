# The licences of all that is compiled in, as one machine-readable copyright file. They are read
# from where the package managers put them; what has none stops the build.

# What headers alone compile in: target, name, Debian package.
set(header_libraries
  "CLI11::CLI11 CLI11 libcli11-dev"
  "nlohmann_json::nlohmann_json nlohmann-json nlohmann-json3-dev"
  "pybind11::headers pybind11 pybind11-dev")

set(copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: context-delta
Comment: The program, the library and the Python module contain what is named below, compiled in.
")

# context_delta_copyright(FILES NAME LICENCE): a paragraph on FILES with the text of LICENCE.
function(context_delta_copyright files name licence)
  if(NOT EXISTS ${licence})
    message(FATAL_ERROR "${name} is compiled in, but its licence ${licence} is missing: "
      "install the package whole")
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${licence})
  file(READ ${licence} text)
  string(REGEX MATCHALL "Copyright:? [^\n]*[0-9][0-9][0-9][0-9][^\n]*" owners "${text}")
  if(NOT owners)
    message(FATAL_ERROR "${licence} names no copyright holder")
  endif()
  list(REMOVE_DUPLICATES owners)
  list(TRANSFORM owners REPLACE "^Copyright:? *(\\([cC]\\)|©)? *" "")
  list(JOIN owners "\n  " owners)
  string(STRIP "${text}" text)
  string(REGEX REPLACE "[ \t\r]+\n" "\n" text "${text}")
  string(REPLACE "\n" "\n " text "${text}")
  string(REPLACE "\n \n" "\n .\n" text "${text}")
  string(REPLACE "\n \n" "\n .\n" text "${text}")
  set(copyright "${copyright}
Files: ${files}
Copyright: ${owners}
License: ${name}
 ${text}
" PARENT_SCOPE)
endfunction()

context_delta_copyright(* MIT ${PROJECT_SOURCE_DIR}/LICENSE)
set(modules ${PROJECT_SOURCE_DIR}/node_modules)
context_delta_copyright(node_modules/tree-sitter/vendor/* tree-sitter
  ${modules}/tree-sitter/LICENSE)
context_delta_copyright(node_modules/tree-sitter/vendor/tree-sitter/lib/src/unicode/* ICU
  ${modules}/tree-sitter/vendor/tree-sitter/lib/src/unicode/LICENSE)
get_property(grammars GLOBAL PROPERTY context_delta_grammar_packages)
list(SORT grammars)
list(REMOVE_DUPLICATES grammars)
foreach(package IN LISTS grammars)
  context_delta_copyright(node_modules/${package}/* ${package} ${modules}/${package}/LICENSE)
endforeach()

set(programs context-delta)
if(TARGET python_module)
  list(APPEND programs python_module)
endif()
context_delta_link_closure(own others ${programs})
foreach(library IN LISTS header_libraries)
  string(REPLACE " " ";" library "${library}")
  list(GET library 0 target)
  list(GET library 1 name)
  list(GET library 2 package)
  if(target IN_LIST others)
    set(CONTEXT_DELTA_LICENCE_${name} /usr/share/doc/${package}/copyright
      CACHE FILEPATH "Licence of ${name}, which is compiled in")
    context_delta_copyright(${package}/* ${name} ${CONTEXT_DELTA_LICENCE_${name}})
    list(REMOVE_ITEM others ${target})
  endif()
endforeach()

# All others are linked as shared libraries, with licences of their own; a new one is looked at.
list(REMOVE_ITEM others Python3::Module md4c SQLite::SQLite3 Threads::Threads yaml-cpp
  zstd::libzstd_shared)
if(others)
  message(FATAL_ERROR "the programs are linked from ${others}: if they are compiled in, name "
    "them in header_libraries of ${CMAKE_CURRENT_LIST_FILE}")
endif()

file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/documents/copyright CONTENT "${copyright}" @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/documents/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT program)
