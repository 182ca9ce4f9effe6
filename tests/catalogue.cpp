// The one unit of the tests that compiles the adapters of the whole catalogue.
#define VORX_CATALOGUE_DEFINITIONS
#include "catalogue_calls.inc"
