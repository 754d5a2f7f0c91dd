// How paths are put together on this system.
#ifndef PLINTH_PATH_H
#define PLINTH_PATH_H

#ifdef _WIN32
#define PLINTH_PATH_SEPARATOR "\\"
#else
#define PLINTH_PATH_SEPARATOR "/"
#endif

#endif
