// The one translation unit that compiles Boost.JSON's implementation into the
// platform library: measured here, the header-only build parses faster than
// Debian's shared library, and every layer above shares this copy.
#include <boost/json/src.hpp>
