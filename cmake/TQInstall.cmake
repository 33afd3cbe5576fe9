# Installation, in three components: Runtime is the shared library, Development is what compilers
# and linkers need in addition (also a static library), Tools are the programs. No installed file contains its own path, so
# the installed tree can be moved.

include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TQFoundation")

install(TARGETS TQFoundation EXPORT TQFoundationTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Development)

# The public headers and the detail headers that they include.
get_property(headers GLOBAL PROPERTY TQ_PUBLIC_HEADERS)
list(APPEND headers TQFoundation.h)
set(source_dir "${PROJECT_SOURCE_DIR}/Modules/TQFoundation/Source")
set(seen "")
while(headers)
  list(POP_FRONT headers header)
  if(header IN_LIST seen)
    continue()
  endif()
  list(APPEND seen "${header}")
  get_filename_component(room "${header}" DIRECTORY)
  install(FILES "${source_dir}/${header}" COMPONENT Development
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/TQFoundation/${room}")
  file(STRINGS "${source_dir}/${header}" includes REGEX "^#include <TQFoundation/.*/detail/")
  list(TRANSFORM includes REPLACE "^#include <TQFoundation/(.*)>.*" "\\1")
  list(APPEND headers ${includes})
endwhile()

# find_package(TQFoundation) accepts any version of the requested series.
install(EXPORT TQFoundationTargets NAMESPACE TQFoundation:: DESTINATION "${package_dir}"
  COMPONENT Development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/TQFoundationConfig.cmake.in"
  TQFoundationConfig.cmake INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(TQFoundationConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/TQFoundationConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/TQFoundationConfigVersion.cmake"
              $<$<BOOL:${TQ_STATIC}>:${PROJECT_SOURCE_DIR}/cmake/TQDependencies.cmake>
  DESTINATION "${package_dir}" COMPONENT Development)

# pkg-config: the prefix is relative to the folder of the .pc file.
file(RELATIVE_PATH up_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" up_to_prefix "${up_to_prefix}")
# Programs that link our archive link the shared libraries that it uses. Requires.private would look
# for archives of these, too. mimalloc has no .pc file.
set(other_libraries "")
set(other_packages "")
if(TQ_STATIC)
  list(JOIN TQ_PKG_CONFIG_MODULES " " modules)
  set(other_libraries " -lmimalloc")
  set(other_packages "Requires: ${modules} icu-i18n icu-uc tbb\n")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/TQFoundation.pc.in" TQFoundation.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/TQFoundation.pc" COMPONENT Development
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# gdb loads printers from its auto-load folder, under the path of the library.
if(NOT TQ_STATIC)
  install(CODE "
    file(INSTALL \"${PROJECT_SOURCE_DIR}/Modules/TQFoundation/Debugging/tqfoundation_gdb.py\"
      DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\"
      RENAME \"libTQFoundation.so.${PROJECT_VERSION}-gdb.py\")" COMPONENT Development)
endif()
