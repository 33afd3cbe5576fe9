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

# Each component has its own description, whose first line is the package's summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

# dpkg-shlibdeps finds the packages that our shared library needs. The other two packages depend on
# exactly this version of it. dpkg runs ldconfig at the end, once for all packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
get_target_property(library_dir TQFoundation BINARY_DIR)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${library_dir}")
set(runtime_package "libtqfoundation${TQ_SERIES}")

# It does not see the libraries that are loaded at their first use.
get_property(lazy_libraries GLOBAL PROPERTY TQ_LAZY_LIBRARIES)
set(lazy_packages "")
foreach(library IN LISTS lazy_libraries)
  string(REPLACE "|" ";" library "${library}")
  list(GET library 0 file)
  list(GET library 1 version)
  execute_process(COMMAND dpkg-query --search "${file}" OUTPUT_VARIABLE owner ERROR_QUIET)
  if(owner MATCHES "^([^: ]+):")
    list(APPEND lazy_packages "${CMAKE_MATCH_1} (>= ${version})")
  endif()
endforeach()
list(JOIN lazy_packages ", " CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
file(CONFIGURE OUTPUT debian/shlibs CONTENT
  "libTQFoundation ${TQ_SERIES} ${runtime_package} (>= ${PROJECT_VERSION})\n")
file(CONFIGURE OUTPUT debian/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_BINARY_DIR}/debian/shlibs" "${CMAKE_CURRENT_BINARY_DIR}/debian/triggers")
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
  # Pango is loaded with the first text, so that dpkg-shlibdeps does not find it.
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}), libpangocairo-1.0-0")
  set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "Archives, compares and draws vector drawings\nA command-line program on TQFoundation.")
endif()

# Each package has a folder of documents with the licence and the history.
set(debian "${CMAKE_CURRENT_BINARY_DIR}/debian")
file(CONFIGURE OUTPUT debian/copyright CONTENT
"TQFoundation, ${PROJECT_DESCRIPTION}.

Copyright 2026 The TQFoundation authors

Licensed under the Apache License, version 2.0. On Debian systems, its text is in
/usr/share/common-licenses/Apache-2.0.
")
file(CONFIGURE OUTPUT debian/changelog CONTENT
"tqfoundation (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}. CHANGELOG.md of the sources lists the changes.

 -- ${CPACK_PACKAGE_CONTACT}  Sun, 22 Nov 2026 12:00:00 +0000
")
tq_compress("${debian}/changelog" "${debian}/changelog.gz")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" key)
  install(FILES "${debian}/copyright" "${debian}/changelog.gz" COMPONENT "${component}"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${key}_PACKAGE_NAME}")
endforeach()
# CPack adds scripts that call ldconfig. The trigger does the same, but CPack does not know it.
file(CONFIGURE OUTPUT debian/overrides CONTENT
  "${runtime_package}: maintscript-calls-ldconfig [postinst]
${runtime_package}: maintscript-calls-ldconfig [postrm]
")
install(FILES "${debian}/overrides" COMPONENT Runtime RENAME "${runtime_package}"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides")

include(CPack)
