tq_add_room_tests(TQPlatform
  ${CMAKE_CURRENT_LIST_DIR}/Base64Test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CollationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileHandleTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileReadingTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KeyedArchiverTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OperationQueueTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/OperationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/RunLoopTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TimerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/URLSessionTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/URLTest.cpp)

# A host whose toolkit runs the process's default main context is played by GLib itself.
# An HTTPS server needs OpenSSL.
pkg_check_modules(libssl REQUIRED IMPORTED_TARGET libssl)
target_link_libraries(TQPlatformTests PRIVATE PkgConfig::glib PkgConfig::libssl PkgConfig::libcrypto)

# An independent reader and writer of binary property lists, to compare with.
pkg_check_modules(libplist REQUIRED IMPORTED_TARGET libplist-2.0)
tq_add_internal_tests(TQPlatform
  ${CMAKE_CURRENT_LIST_DIR}/BinaryPropertyListTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KeyedArchiverFaultTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KeyedUnarchiverTest.cpp)
target_link_libraries(TQPlatformInternalTests PRIVATE PkgConfig::libplist)
include("${CMAKE_CURRENT_LIST_DIR}/Json.cmake" OPTIONAL)

# Services of the system, with its writes made to fail, beside the database's own view of its files.
tq_add_room_tests(TQServices
  ${CMAKE_CURRENT_LIST_DIR}/ExternalToolTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileDownloadTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileServicesTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/KeychainTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/UserDefaultsFaultTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/UserDefaultsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/FailingSystemCalls.cpp)
target_link_libraries(TQServicesTests PRIVATE PkgConfig::sqlite3)
