// Compiles the header-only peer.
#include <boost/json/src.hpp>
