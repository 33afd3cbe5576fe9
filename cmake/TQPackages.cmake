# Debian packages, one per component. `cpack` writes them to the folder packages of the build tree.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tqfoundation)
set(CPACK_PACKAGE_VENDOR Korvan)
set(CPACK_PACKAGE_CONTACT "TQFoundation <tqfoundation@korvan.invalid>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# dpkg-shlibdeps finds the packages that our shared library needs. The other two packages depend on
# exactly this version of it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
get_target_property(library_dir TQFoundation BINARY_DIR)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${library_dir}")
set(runtime_package "libtqfoundation${TQ_SERIES}")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}\nThe shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtqfoundation-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "${PROJECT_DESCRIPTION}\nHeaders, and what CMake and pkg-config read.")

if(TARGET tqdoc)
  list(APPEND CPACK_COMPONENTS_ALL Tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tqdoc)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
  set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "Archives, compares and draws vector drawings\nA command-line program on TQFoundation.")
endif()

include(CPack)
