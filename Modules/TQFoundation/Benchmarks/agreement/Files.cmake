# The peers of the other folders as independent references. Not a benchmark: ./run agree runs it.
add_executable(TQAgreement "${CMAKE_CURRENT_LIST_DIR}/Agreement.cpp")
tq_own_target(TQAgreement)
target_link_libraries(TQAgreement PRIVATE
  TQFoundation PkgConfig::2geom PkgConfig::gsl Boost::headers TQPeerDtl)
