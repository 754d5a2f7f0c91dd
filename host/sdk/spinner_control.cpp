#include "host/sdk/spinner_control.h"

namespace maxhost {
namespace {

std::string TextOf(HWND edit) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(edit)) + 1, '\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextA(edit, text.data(), static_cast<int>(text.size()))));
    return text;
}

}  // namespace

void SpinnerControl::Release() {
    if (--references_ == 0) {
        delete this;
    }
}

void SpinnerControl::OnWindowDestroyed() {
    LinkToEdit(nullptr, EDITTYPE_FLOAT);
    window_ = nullptr;
    Release();
}

float SpinnerControl::GetFVal() {
    TakeTypedText();
    return value_.AsFloat();
}

int SpinnerControl::GetIVal() {
    TakeTypedText();
    return value_.AsInt();
}

void SpinnerControl::SetScale(float scale) {
    value_.SetScale(scale);
    ShowValue();
}

void SpinnerControl::SetNumber(double value, int notify) {
    isIndeterminate_ = FALSE;
    const bool hasChanged = value_.Set(value);
    Changed(hasChanged && notify);
}

void SpinnerControl::SetLimits(int lowest, int highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerControl::SetLimits(float lowest, float highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerControl::SetLimitsAndShow(double lowest, double highest, int limitCurValue) {
    value_.SetLimits(lowest, highest, limitCurValue != FALSE);
    ShowValue();
}

void SpinnerControl::LinkToEdit(HWND edit, EditSpinnerType type) {
    if (edit_ != nullptr) {
        SetLinkedSpinner(edit_, nullptr);
    }
    edit_ = edit;
    if (edit_ != nullptr) {
        value_.SetType(type);
        SetLinkedSpinner(edit_, window_);
        ShowValue();
    }
}

void SpinnerControl::SetIndeterminate(BOOL onOff) {
    isIndeterminate_ = onOff;
    ShowValue();
}

void SpinnerControl::StepAndNotify(int steps) {
    TakeTypedText();
    isIndeterminate_ = FALSE;
    Changed(value_.Step(steps));
}

void SpinnerControl::TakeTypedText() {
    if (!IsWindow(edit_)) {
        return;
    }
    const std::string text = TextOf(edit_);
    if (text != shown_) {
        isIndeterminate_ = FALSE;
        Changed(value_.SetText(text));
    }
}

void SpinnerControl::ShowValue() {
    if (edit_ == nullptr) {
        return;
    }
    shown_ = isIndeterminate_ ? std::string() : value_.Text();
    if (TextOf(edit_) != shown_) {
        SetWindowTextA(edit_, shown_.c_str());
    }
}

void SpinnerControl::Changed(bool hasChanged) {
    ShowValue();
    if (hasChanged) {
        Notify(CC_SPINNER_CHANGE, IsDragging() ? TRUE : FALSE);
    }
}

void SpinnerControl::Notify(UINT message, BOOL flag) {
    if (window_ == nullptr) {
        return;
    }
    SendMessageA(GetParent(window_), message, MAKEWPARAM(GetDlgCtrlID(window_), flag),
                 reinterpret_cast<LPARAM>(static_cast<ISpinnerControl*>(this)));
}

}  // namespace maxhost

void ReleaseISpinner(ISpinnerControl* spinner) {
    if (spinner != nullptr) {
        static_cast<maxhost::SpinnerControl*>(spinner)->Release();
    }
}
