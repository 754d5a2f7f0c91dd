// Custom controls of dialogs: the edit and the spinner.
#ifndef HOST_SDK_INCLUDE_CUSTCONT_H
#define HOST_SDK_INCLUDE_CUSTCONT_H

#include <coreexp.h>
#include <windows.h>

// Window classes for dialog templates.
#define CUSTEDITWINDOWCLASS "CustEdit"
#define SPINNERWINDOWCLASS "SpinnerControl"

// Messages of a spinner to its dialog's procedure. LOWORD(wParam) is the control's id, lParam the
// ISpinnerControl*; HIWORD(wParam) is TRUE while the user drags, for BUTTONUP FALSE when the drag
// was cancelled.
#define CC_SPINNER_CHANGE (WM_USER + 600)
#define CC_SPINNER_BUTTONDOWN (WM_USER + 601)
#define CC_SPINNER_BUTTONUP (WM_USER + 602)

enum EditSpinnerType {
    EDITTYPE_INT,
    EDITTYPE_FLOAT,
    EDITTYPE_UNIVERSE,
    EDITTYPE_POS_INT,
    EDITTYPE_POS_FLOAT,
    EDITTYPE_POS_UNIVERSE,
    EDITTYPE_TIME
};

class ICustomControl {
  public:
    virtual HWND GetHwnd() = 0;
    virtual void Enable(BOOL onOff = TRUE) = 0;
    virtual void Disable() = 0;
    virtual BOOL IsEnabled() = 0;

  protected:
    virtual ~ICustomControl() {}
};

class ISpinnerControl : public ICustomControl {
  public:
    virtual float GetFVal() = 0;
    virtual int GetIVal() = 0;  // towards 0
    virtual void SetAutoScale(BOOL onOff = TRUE) = 0;
    virtual void SetScale(float scale) = 0;  // the size of one step
    // `notify`: whether the dialog is sent CC_SPINNER_CHANGE when the value changes.
    virtual void SetValue(float value, int notify) = 0;
    virtual void SetValue(int value, int notify) = 0;
    // `limitCurValue`: whether the current value is brought within them at once.
    virtual void SetLimits(int lowest, int highest, int limitCurValue = TRUE) = 0;
    virtual void SetLimits(float lowest, float highest, int limitCurValue = TRUE) = 0;
    // The edit that shows the value and takes typed ones; the type is the value's.
    virtual void LinkToEdit(HWND edit, EditSpinnerType type) = 0;
    // Shows no value until one is set.
    virtual void SetIndeterminate(BOOL onOff = TRUE) = 0;
    virtual BOOL IsIndeterminate() = 0;
    // What a right click on the spinner gives.
    virtual void SetResetValue(float value) = 0;
    virtual void SetResetValue(int value) = 0;
    virtual void SetKeyBrackets(BOOL onOff) = 0;
};

// Null for a window of another class. The spinner lives as long as its window and whoever
// holds it; every successful GetISpinner has its ReleaseISpinner (null is fine).
CoreExport ISpinnerControl* GetISpinner(HWND window);
CoreExport void ReleaseISpinner(ISpinnerControl* spinner);

#endif
