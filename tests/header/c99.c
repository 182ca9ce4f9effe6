/* The public header compiles as C99 with -pedantic. */
#include "vorx.h"

typedef const vorxVersionRecord* (*VersionQuery)(void);
VersionQuery vorx_header_c99_check(void) { return vorxGetLibVersion; }
