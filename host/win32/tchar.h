/* The 8-bit form of Windows' generic text, the only one that the SDK of this release has. */
#ifndef HOST_WIN32_TCHAR_H
#define HOST_WIN32_TCHAR_H

typedef char TCHAR;

#define _T(text) text
#define _TEXT(text) text

#endif /* HOST_WIN32_TCHAR_H */
