# CPack: Debian packages of the program, the library and the Python module, and one plain archive.
set(CONTEXT_DELTA_MAINTAINER "The Context Delta developers <maintainers@context-delta.invalid>"
  CACHE STRING "Maintainer of the Debian packages")

# What only Debian packages hold. Components: program, development, python are for all.
find_program(GIT git REQUIRED)
set(epoch $ENV{SOURCE_DATE_EPOCH})
if(NOT epoch)
  execute_process(COMMAND ${GIT} -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
    OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT epoch)
  set(epoch 0)
endif()
configure_file(changelog.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/changelog.cmake @ONLY)
set(changelog ${PROJECT_BINARY_DIR}/documents/changelog.gz)
add_custom_command(OUTPUT ${changelog}
  COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_BINARY_DIR}/changelog.cmake
  DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/changelog.cmake VERBATIM)
add_custom_target(changelog ALL DEPENDS ${changelog})

# context_delta_debian(GROUP PACKAGE COMPONENT ...): the components as one Debian package.
function(context_delta_debian group package)
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${changelog} ${PROJECT_BINARY_DIR}/documents/copyright DESTINATION ${documents}
    COMPONENT debian_${group} EXCLUDE_FROM_ALL)
  foreach(component IN LISTS ARGN ITEMS debian_${group})
    string(TOUPPER ${component} component)
    set(CPACK_COMPONENT_${component}_GROUP ${group} PARENT_SCOPE)
  endforeach()
  string(TOUPPER ${group} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(debian_components ${debian_components} ${ARGN} debian_${group} PARENT_SCOPE)
endfunction()

set(debian_components "")
context_delta_debian(program context-delta program)
context_delta_debian(library libcontext-delta-dev development)
if(TARGET python_module)
  # Debian's own interpreter looks elsewhere than one that was installed by hand.
  set(python_folder lib/python3/dist-packages)
  install(TARGETS python_module LIBRARY DESTINATION ${python_folder}
    COMPONENT debian_module EXCLUDE_FROM_ALL)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/python/context_delta-stubs
    DESTINATION ${python_folder} COMPONENT debian_module EXCLUDE_FROM_ALL)
  context_delta_debian(python python3-context-delta debian_module)
endif()

set(CPACK_PACKAGE_NAME context-delta)
set(CPACK_PACKAGE_VENDOR "The Context Delta developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "what a branch changed, for review")
string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_FILE_NAME
  context-delta-${PROJECT_VERSION}-${system}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/cpack_project.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/cpack_times.cmake)
set(CPACK_CONTEXT_DELTA_COMPONENTS ${debian_components})
set(CPACK_CONTEXT_DELTA_EPOCH ${epoch})

set(about "
One structured answer, cut to a token budget: the changed files by impact,
the symbols on the changed lines, the callers that a call edge proves and
those that are only guessed, and honest counts of all that was left out.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${CONTEXT_DELTA_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "what a branch changed, for review${about}")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS git)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
  "what a branch changed, for review - C++ library${about}

This package has the static library, its headers and its CMake configuration.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libdevel)
list(JOIN library_packages ", " CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS git)
if(TARGET python_module)
  set(CPACK_DEBIAN_PYTHON_DESCRIPTION "what a branch changed, for review - Python module${about}")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  math(EXPR next_minor "${Python3_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "git, python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next_minor})")
endif()
include(CPack)
