// The one place where the header-only peer is compiled.
#include <boost/json/src.hpp>
