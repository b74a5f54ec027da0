// The emulator compiles its own copy of Boost.JSON: it links nothing of the
// library, so that the two sides of the wire share no code but this.
#include <boost/json/src.hpp>
