# The libraries behind the platform room. Each is used by the .cpp files of that room alone.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(simdjson REQUIRED IMPORTED_TARGET simdjson)
pkg_check_modules(libcrypto REQUIRED IMPORTED_TARGET libcrypto)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(mimalloc REQUIRED)
find_package(TBB REQUIRED COMPONENTS tbb)
pkg_check_modules(libdeflate REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(zlib REQUIRED IMPORTED_TARGET zlib)
pkg_check_modules(liblz4 REQUIRED IMPORTED_TARGET liblz4)
pkg_check_modules(liblzma REQUIRED IMPORTED_TARGET liblzma)
pkg_check_modules(glib REQUIRED IMPORTED_TARGET glib-2.0)
