tq_add_room_tests(TQPlatform
  ${CMAKE_CURRENT_LIST_DIR}/text/TextTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/bytes/CodecTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/files/FileHandleTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/archive/KeyedArchiverTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/operations/OperationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/operations/WorkerPoolTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/log/PlainLogTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/loops/RunLoopTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/loops/TimerTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/network/URLSessionTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/HandMovedClock.cpp)
target_compile_definitions(TQPlatformTests PRIVATE
  "TQ_TEST_DATA=\"${CMAKE_CURRENT_LIST_DIR}/bytes/data\"")

# GLib itself acts as a host whose toolkit runs the process's default main context.
# An HTTPS server needs OpenSSL.
pkg_check_modules(libssl REQUIRED IMPORTED_TARGET libssl)
target_link_libraries(TQPlatformTests PRIVATE
  PkgConfig::TQ_glib PkgConfig::libssl PkgConfig::TQ_libcrypto)

# An independent reader and writer of binary property lists, to compare with.
pkg_check_modules(libplist REQUIRED IMPORTED_TARGET libplist-2.0)
tq_add_internal_tests(TQPlatform
  ${CMAKE_CURRENT_LIST_DIR}/archive/BinaryPropertyListTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/archive/KeyedUnarchiverTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/threads/ObjectMonitorTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/threads/SerialQueueTest.cpp)
target_link_libraries(TQPlatformInternalTests PRIVATE PkgConfig::libplist)
# Separate executables, because they replace the allocation functions.
tq_add_room_tests(TQPlatformFault
  ${CMAKE_CURRENT_LIST_DIR}/archive/KeyedArchiverFaultTest.cpp)
tq_add_room_tests(TQFilesFault
  ${CMAKE_CURRENT_LIST_DIR}/files/FilesFaultTest.cpp)
tq_add_room_tests(TQOperationsFault
  ${CMAKE_CURRENT_LIST_DIR}/operations/OperationFaultTest.cpp)
# Alone, because other tests link libraries that this one expects not to be loaded.
tq_add_room_tests(TQLazyLibraries
  ${CMAKE_CURRENT_LIST_DIR}/libraries/LazyLibrariesTest.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/Source/platform/libraries/LazyLibrary.cpp)
include("${CMAKE_CURRENT_LIST_DIR}/Json.cmake")

# Services of the system. Some tests make its writes fail, or access the database directly.
tq_add_room_tests(TQServices
  ${CMAKE_CURRENT_LIST_DIR}/files/ExternalToolTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/network/FileDownloadTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/files/FileReplacementTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/files/FileServicesTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/network/KeychainTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/preferences/PreferenceObservationTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/preferences/SickPreferencesTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/preferences/UserDefaultsFaultTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/preferences/UserDefaultsTest.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../support/FailingSystemCalls.cpp)
target_link_libraries(TQServicesTests PRIVATE PkgConfig::TQ_sqlite3)

# A separate D-Bus session with its own keychain service, independent of the user's session.
find_program(DBUS_RUN_SESSION dbus-run-session)
find_program(GNOME_KEYRING gnome-keyring-daemon)
if(DBUS_RUN_SESSION AND GNOME_KEYRING AND NOT TQ_SANITIZE MATCHES thread)
  set(home "${CMAKE_CURRENT_BINARY_DIR}/keychain")
  file(MAKE_DIRECTORY "${home}")
  add_test(NAME keychain.service COMMAND "${DBUS_RUN_SESSION}" -- sh -ec
    "printf password | '${GNOME_KEYRING}' --unlock --components=secrets >'${home}/log'
     '$<TARGET_FILE:TQServicesTests>' --gtest_filter='KeychainService.*'")
  set_tests_properties(keychain.service PROPERTIES
    ENVIRONMENT "TQ_TEST_KEYCHAIN=1;HOME=${home};XDG_DATA_HOME=${home};XDG_RUNTIME_DIR=${home}"
    FAIL_REGULAR_EXPRESSION SKIPPED TIMEOUT 60)
endif()

# The algorithm of RFC 3986 in python, to compare with.
find_program(TQ_PYTHON python3 REQUIRED)
add_executable(TQURLPeer ${CMAKE_CURRENT_LIST_DIR}/text/URLPeer.cpp)
tq_own_target(TQURLPeer)
target_link_libraries(TQURLPeer PRIVATE TQFoundation)
add_test(NAME platform.rfc3986
  COMMAND "${TQ_PYTHON}" "${CMAKE_CURRENT_LIST_DIR}/text/rfc3986.py" "$<TARGET_FILE:TQURLPeer>")
set_tests_properties(platform.rfc3986 PROPERTIES LABELS quick)
