# The third-party libraries. Only .cpp files of the platform room use them. Targets found through
# pkg-config have our prefix (PkgConfig::TQ_zlib), so that a project that contains this one can look
# for the same library in its own way. TQLazyLibraries.cmake has those that the library does not link.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(mimalloc REQUIRED)
find_package(TBB REQUIRED COMPONENTS tbb)
set(TQ_PKG_CONFIG_MODULES simdjson libdeflate zlib liblz4 liblzma glib-2.0 fmt sqlite3)
set(TQ_LIBRARIES ICU::uc ICU::i18n mimalloc TBB::tbb)
foreach(module IN LISTS TQ_PKG_CONFIG_MODULES)
  string(REGEX REPLACE "-[0-9.]+$" "" name "${module}")
  pkg_check_modules(TQ_${name} REQUIRED IMPORTED_TARGET ${module})
  list(APPEND TQ_LIBRARIES PkgConfig::TQ_${name})
endforeach()
