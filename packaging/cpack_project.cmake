# What differs between the kinds of packages.
if(CPACK_GENERATOR STREQUAL DEB)
  set(CPACK_COMPONENTS_ALL ${CPACK_CONTEXT_DELTA_COMPONENTS})
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # or it would precede what each package says
endif()
