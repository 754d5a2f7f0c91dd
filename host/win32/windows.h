/* The part of the Windows interface that the plug-in and the SDK's headers use, for builds that are
   not for Windows. Types have Windows' widths (LONG, ULONG and DWORD are 32 bits wide); functions
   behave as documented for Windows except where a comment says otherwise. They are called from the
   main thread only.

   Handles: an HMODULE (HINSTANCE) comes from LoadLibraryA, or is the one that DllMain received. An
   HWND is a dialog of DialogBoxParamA or one of its controls; calls with one that is not, or no
   longer, do nothing and give 0. Nothing is drawn: windows are states, in dialog units. */
#ifndef HOST_WIN32_WINDOWS_H
#define HOST_WIN32_WINDOWS_H

/* ------------------------------------------------------------ for resource files too */

#define WS_POPUP 0x80000000
#define WS_DISABLED 0x08000000
#define WS_CAPTION 0x00c00000
#define WS_SYSMENU 0x00080000
#define WS_TABSTOP 0x00010000
#define DS_MODALFRAME 0x80
#define ES_AUTOHSCROLL 0x80
#define ES_NUMBER 0x2000

#ifndef RC_INVOKED

#include <stddef.h>
#include <stdio.h>
#include <tchar.h>

#define VOID void
#define CONST const
#define WINAPI
#define CALLBACK
#define APIENTRY
#define __cdecl
#define __stdcall

#ifndef TRUE
#define FALSE 0
#define TRUE 1
#endif

#define MAX_PATH 260

/* ------------------------------------------------------------ types */

typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef unsigned int DWORD;
typedef int INT;
typedef unsigned int UINT;
typedef int LONG;
typedef unsigned int ULONG;
typedef short SHORT;
typedef unsigned short USHORT;
typedef char CHAR;
typedef unsigned char UCHAR;
typedef float FLOAT;

typedef long INT_PTR;
typedef unsigned long UINT_PTR;
typedef long LONG_PTR;
typedef unsigned long ULONG_PTR;
typedef ULONG_PTR DWORD_PTR;
typedef ULONG_PTR SIZE_T;

typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef LONG_PTR LRESULT;

typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef char* LPSTR;
typedef const char* LPCSTR;
typedef TCHAR* LPTSTR;
typedef const TCHAR* LPCTSTR;
typedef BYTE* LPBYTE;
typedef DWORD* LPDWORD;

typedef void* HANDLE;
typedef struct WindowObject* HWND;
typedef struct DeviceContextObject* HDC;
typedef struct ModuleObject* HINSTANCE;
typedef HINSTANCE HMODULE;

typedef DWORD COLORREF; /* 0x00BBGGRR */

typedef struct tagRECT {
    LONG left, top, right, bottom;
} RECT;

#ifdef __cplusplus
extern "C" {
#endif

typedef INT_PTR(WINAPI* FARPROC)();
typedef INT_PTR(CALLBACK* DLGPROC)(HWND, UINT, WPARAM, LPARAM);
typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID);

/* ------------------------------------------------------------ macros */

#define LOBYTE(value) ((BYTE)((value)&0xff))
#define HIBYTE(value) ((BYTE)(((value) >> 8) & 0xff))
#define LOWORD(value) ((WORD)((value)&0xffff))
#define HIWORD(value) ((WORD)(((value) >> 16) & 0xffff))
#define MAKELONG(low, high) ((LONG)((WORD)(low) | ((DWORD)(WORD)(high) << 16)))

#define MAKEWPARAM(low, high) ((WPARAM)(DWORD)MAKELONG(low, high))

#define RGB(red, green, blue) \
    ((COLORREF)((BYTE)(red) | ((WORD)(BYTE)(green) << 8) | ((DWORD)(BYTE)(blue) << 16)))
#define GetRValue(color) ((BYTE)((color)&0xff))
#define GetGValue(color) ((BYTE)(((color) >> 8) & 0xff))
#define GetBValue(color) ((BYTE)(((color) >> 16) & 0xff))

#define MAKEINTRESOURCEA(id) ((LPSTR)((ULONG_PTR)((WORD)(id))))
#define MAKEINTRESOURCE MAKEINTRESOURCEA

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

#define MB_OK 0x00000000
#define MB_ICONEXCLAMATION 0x00000030
#define MB_ICONWARNING MB_ICONEXCLAMATION

#define IDOK 1
#define IDCANCEL 2

#define WM_DESTROY 0x0002
#define WM_SETFOCUS 0x0007
#define WM_KILLFOCUS 0x0008
#define WM_ENABLE 0x000a
#define WM_SETTEXT 0x000c
#define WM_GETTEXT 0x000d
#define WM_GETTEXTLENGTH 0x000e
#define WM_CLOSE 0x0010
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111
#define WM_USER 0x0400

#define GWLP_USERDATA (-21)

#define BS_PUSHBUTTON 0
#define BS_DEFPUSHBUTTON 1
#define BS_CHECKBOX 2
#define BS_AUTOCHECKBOX 3
#define BS_GROUPBOX 7
#define BS_TYPEMASK 0xf

#define BST_UNCHECKED 0
#define BST_CHECKED 1
#define BM_GETCHECK 0x00f0
#define BM_SETCHECK 0x00f1
#define BM_CLICK 0x00f5

/* High words of WM_COMMAND. */
#define BN_CLICKED 0
#define EN_SETFOCUS 0x0100
#define EN_KILLFOCUS 0x0200
#define EN_CHANGE 0x0300
#define EN_UPDATE 0x0400

/* ------------------------------------------------------------ modules */

/* A module's own entry point, defined by the module. Declared here so that its definition is found
   by name whatever the module's default linkage and visibility are. */
__attribute__((visibility("default"))) BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason,
                                                           LPVOID reserved);

/* Loads the shared object at `path`; where that file is missing and the name ends in ".dll", the
   one of the same base name that ends in ".so". Both '\' and '/' separate directories. The first
   load of a module runs its DllMain with DLL_PROCESS_ATTACH; FALSE unloads it. Null on failure. */
HMODULE WINAPI LoadLibraryA(LPCSTR path);
/* One FreeLibrary for each successful LoadLibraryA; the last one runs DllMain with
   DLL_PROCESS_DETACH and unloads. FALSE for a handle that is not loaded. */
BOOL WINAPI FreeLibrary(HMODULE module);
FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name);

/* Text `id` of the module's string table as UTF-8, cut to size - 1 bytes at a character's start and
   NUL-terminated. Returns its length; 0 where there is no such text. */
int WINAPI LoadStringA(HINSTANCE instance, UINT id, LPSTR buffer, int size);

/* ------------------------------------------------------------ windows */

BOOL WINAPI IsWindow(HWND window);
/* Runs the dialog's procedure or does what the control's class does; 0 where a dialog's procedure
   has handled the message. */
LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/* A control's dialog; a dialog's owner. */
HWND WINAPI GetParent(HWND window);
int WINAPI GetDlgCtrlID(HWND window);
/* Whether it was disabled before. */
BOOL WINAPI EnableWindow(HWND window, BOOL enable);
BOOL WINAPI IsWindowEnabled(HWND window);
int WINAPI GetWindowTextLengthA(HWND window);
int WINAPI GetWindowTextA(HWND window, LPSTR buffer, int size);
BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text);
/* GWLP_USERDATA alone; the former value, 0 for any other index. */
LONG_PTR WINAPI GetWindowLongPtrA(HWND window, int index);
LONG_PTR WINAPI SetWindowLongPtrA(HWND window, int index, LONG_PTR value);
/* In dialog units, on a screen that begins at (0, 0). */
BOOL WINAPI GetWindowRect(HWND window, RECT* rect);
/* A control's place counts from its dialog's corner. */
BOOL WINAPI MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);

/* ------------------------------------------------------------ dialogs */

/* Makes the dialog that the module's resources hold under that number (MAKEINTRESOURCEA), runs the
   procedure with WM_INITDIALOG, calls the installed win32::User, and gives what EndDialog was
   given. -1: `instance` is not a loaded module, it holds no such dialog or a broken one, a
   control's class is unknown, or neither user nor procedure ended the dialog. */
INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR templateName, HWND parent,
                               DLGPROC procedure, LPARAM parameter);
BOOL WINAPI EndDialog(HWND dialog, INT_PTR result);
HWND WINAPI GetDlgItem(HWND dialog, int id); /* the first of that id */
LRESULT WINAPI SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
/* The text, cut to size - 1 bytes; returns its length. */
UINT WINAPI GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size);
BOOL WINAPI SetDlgItemTextA(HWND dialog, int id, LPCSTR text);
BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check);
UINT WINAPI IsDlgButtonChecked(HWND dialog, int id);

/* Read by the installed win32::User. */
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR title, UINT type);

void WINAPI OutputDebugStringA(LPCSTR text);

/* ------------------------------------------------------------ Microsoft's C library */

typedef int errno_t;

/* On failure: EINVAL for a null argument or size 0, ERANGE where the text does not fit; then the
   destination, if there is one, holds "". (Microsoft's library ends the process instead.) */
errno_t strcpy_s(char* destination, size_t size, const char* source);
/* 0 and *file open, or the errno and *file null. A file opened for writing is shared with nobody,
   one opened for reading with readers alone (EACCES), among those that open with this function. */
errno_t fopen_s(FILE** file, const char* name, const char* mode);

/* ASCII letters only, as in the C locale. */
int _stricmp(const char* a, const char* b);
char* _strupr(char* text);
char* _strlwr(char* text);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* RC_INVOKED */

#endif /* HOST_WIN32_WINDOWS_H */
