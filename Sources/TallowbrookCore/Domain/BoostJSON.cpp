// The JSON library's own code, compiled once here, so that no program depends on a shared copy.
#include <boost/json/src.hpp>
