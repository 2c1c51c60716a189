# The C++ library as other programs use it: one archive, the public headers and what
# find_package(context_delta) reads.
set(library_roots services render context_delta_component)

# What programs include, and all that these include.
set(public_headers
  render/formats.h
  services/delta.h
  services/explain_files.h
  services/index_at.h
  tool_handlers/context_delta/handler.h
  workers/git_history.h)

# The libraries that the archive needs: target, package for find_package ("-" for those that are
# linked by name), Debian package.
set(library_needs
  "SQLite::SQLite3 SQLite3 libsqlite3-dev"
  "Threads::Threads Threads libc6-dev"
  "md4c - libmd4c-dev"
  "yaml-cpp yaml-cpp libyaml-cpp-dev"
  "zstd::libzstd_shared zstd libzstd-dev")

context_delta_link_closure(own others ${library_roots})
add_library(context_delta_archive STATIC)
add_library(context_delta::context_delta ALIAS context_delta_archive)
foreach(target IN LISTS own)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL STATIC_LIBRARY)
    target_sources(context_delta_archive PRIVATE $<TARGET_OBJECTS:${target}>)
  endif()
endforeach()

set(library_dependencies "")
set(library_packages "")
foreach(need IN LISTS library_needs)
  string(REPLACE " " ";" need "${need}")
  list(GET need 0 target)
  list(GET need 1 package)
  if(target IN_LIST others)
    list(REMOVE_ITEM others ${target})
    target_link_libraries(context_delta_archive PRIVATE ${target})
    if(NOT package STREQUAL "-")
      find_package(${package} REQUIRED)
      string(APPEND library_dependencies "find_dependency(${package})\n")
    endif()
    list(GET need 2 package)
    list(APPEND library_packages ${package})
  endif()
endforeach()
if(others)
  message(FATAL_ERROR "the library is linked from ${others}: name them in library_needs of "
    "${CMAKE_CURRENT_LIST_FILE}")
endif()

# Headers are installed below a folder of our name, and name each other so: a program's own
# "utils/json.h" cannot come between them.
set(waiting ${public_headers})
set(installed_headers "")
while(waiting)
  list(POP_FRONT waiting header)
  if(header IN_LIST installed_headers)
    continue()
  endif()
  list(APPEND installed_headers ${header})
  set(source ${PROJECT_SOURCE_DIR}/src/${header})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  file(READ ${source} text)
  string(REGEX MATCHALL "#include \"[^\"]+\"" includes "${text}")
  list(TRANSFORM includes REPLACE "#include \"(.*)\"" "\\1")
  list(APPEND waiting ${includes})
  string(REPLACE "#include \"" "#include \"context_delta/" text "${text}")
  set(copy ${PROJECT_BINARY_DIR}/public/context_delta/${header})
  file(CONFIGURE OUTPUT ${copy} CONTENT "${text}" @ONLY)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${copy} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/context_delta/${folder}
    COMPONENT development)
endwhile()

set_target_properties(context_delta_archive PROPERTIES
  OUTPUT_NAME context_delta
  EXPORT_NAME context_delta
  LINKER_LANGUAGE CXX)
target_compile_features(context_delta_archive INTERFACE cxx_std_20)
target_include_directories(context_delta_archive INTERFACE
  $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/public> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/context_delta)
install(TARGETS context_delta_archive EXPORT context_delta COMPONENT development)
install(EXPORT context_delta NAMESPACE context_delta:: FILE context_delta_targets.cmake
  DESTINATION ${config_folder} COMPONENT development)
configure_package_config_file(context_delta-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/context_delta-config.cmake
  INSTALL_DESTINATION ${config_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/context_delta-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/context_delta-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/context_delta-config-version.cmake
  DESTINATION ${config_folder} COMPONENT development)
