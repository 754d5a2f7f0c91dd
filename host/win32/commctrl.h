/* The part of the common controls' interface that the plug-in uses. */
#ifndef HOST_WIN32_COMMCTRL_H
#define HOST_WIN32_COMMCTRL_H

#include <windows.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Does nothing: there are no window classes to register. */
void WINAPI InitCommonControls(void);

#ifdef __cplusplus
}
#endif

#endif /* HOST_WIN32_COMMCTRL_H */
