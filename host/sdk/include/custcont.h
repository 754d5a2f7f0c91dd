// Custom controls of dialogs: the edit and the spinner.
#ifndef HOST_SDK_INCLUDE_CUSTCONT_H
#define HOST_SDK_INCLUDE_CUSTCONT_H

#include <coreexp.h>
#include <windows.h>

// Window classes for dialog templates.
#define CUSTEDITWINDOWCLASS "CustEdit"
#define SPINNERWINDOWCLASS "SpinnerControl"

// Sent by a spinner to its dialog's procedure when its value changes. LOWORD(wParam) is the
// control's id, HIWORD(wParam) TRUE while the user drags, lParam the ISpinnerControl*.
#define CC_SPINNER_CHANGE (WM_USER + 600)
// The same for the mouse button on the spinner; HIWORD(wParam) of the second is FALSE when the drag
// was cancelled.
#define CC_SPINNER_BUTTONDOWN (WM_USER + 601)
#define CC_SPINNER_BUTTONUP (WM_USER + 602)

enum EditSpinnerType { EDITTYPE_FLOAT = 1 };

class ISpinnerControl {
  public:
    virtual float GetFVal() = 0;
    virtual void SetScale(float scale) = 0;  // the size of one step
    // `notify`: whether the dialog is sent CC_SPINNER_CHANGE when the value changes.
    virtual void SetValue(float value, int notify) = 0;
    virtual void SetValue(int value, int notify) = 0;
    // `limitCurValue`: whether the current value is brought within them at once.
    virtual void SetLimits(int lowest, int highest, int limitCurValue = TRUE) = 0;
    virtual void SetLimits(float lowest, float highest, int limitCurValue = TRUE) = 0;
    // The edit that shows the value and takes typed ones; the type is the value's.
    virtual void LinkToEdit(HWND edit, EditSpinnerType type) = 0;

  protected:
    virtual ~ISpinnerControl() {}
};

// Null for a window of another class. The spinner lives as long as its window and those who
// hold it; every successful GetISpinner has its ReleaseISpinner (null is fine).
CoreExport ISpinnerControl* GetISpinner(HWND window);
CoreExport void ReleaseISpinner(ISpinnerControl* spinner);

#endif
