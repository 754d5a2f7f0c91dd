// The custom controls as real windows, in front of a window that records what it is told.
#include <custcont.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <winutil.h>

#include <string>
#include <vector>

namespace {

constexpr int kEditId = 1044;
constexpr int kSpinnerId = 1045;

struct Message {
    UINT number;
    int id;
    BOOL flag;
    ISpinnerControl* spinner;
    bool operator==(const Message&) const = default;
};

std::vector<Message> messages;

LRESULT CALLBACK Record(HWND window, UINT number, WPARAM wParam, LPARAM lParam) {
    if (number >= CC_SPINNER_CHANGE && number <= CC_SPINNER_BUTTONUP) {
        messages.push_back(
            {number, LOWORD(wParam), HIWORD(wParam), reinterpret_cast<ISpinnerControl*>(lParam)});
    }
    return DefWindowProcA(window, number, wParam, lParam);
}

void RunMessagesFor(DWORD milliseconds) {
    const DWORD end = GetTickCount() + milliseconds;
    while (GetTickCount() < end) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        Sleep(5);
    }
}

class ControlsTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        WNDCLASSA recorder{};
        recorder.lpfnWndProc = Record;
        recorder.lpszClassName = "Recorder";
        recorder.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
        RegisterClassA(&recorder);
    }

    void SetUp() override {
        ASSERT_EQ(GetISpinner(nullptr), nullptr);  // the host's library is there
        parent_ = CreateWindowExA(0, "Recorder", "", WS_POPUP | WS_VISIBLE, 100, 100, 200, 100,
                                  nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(parent_, nullptr) << "no window can be made";
        edit_ = Child(CUSTEDITWINDOWCLASS, kEditId, 10, 10, 60, 20);
        window_ = Child(SPINNERWINDOWCLASS, kSpinnerId, 72, 10, 12, 20);
        spinner_ = GetISpinner(window_);
        ASSERT_NE(spinner_, nullptr);
        // As the options dialog does.
        spinner_->LinkToEdit(edit_, EDITTYPE_FLOAT);
        spinner_->SetLimits(0.0f, 0.9999f, TRUE);
        spinner_->SetScale(0.0001f);
        spinner_->SetValue(0.075f, FALSE);
        SetFocus(parent_);
        messages.clear();
    }

    void TearDown() override {
        ReleaseISpinner(spinner_);
        DestroyWindow(parent_);
    }

    HWND Child(const char* name, int id, int x, int y, int width, int height) {
        return CreateWindowExA(0, name, "", WS_CHILD | WS_VISIBLE | WS_TABSTOP, x, y, width, height,
                               parent_, reinterpret_cast<HMENU>(INT_PTR(id)), nullptr, nullptr);
    }

    std::string EditText() const {
        char text[128] = "";
        GetWindowTextA(edit_, text, sizeof(text));
        return text;
    }

    void TypeOver(const std::string& text) {
        SetFocus(edit_);
        SendMessageA(edit_, EM_SETSEL, 0, -1);
        for (const char c : text) {
            SendMessageA(edit_, WM_CHAR, static_cast<unsigned char>(c), 0);
        }
    }

    // `y` counts from the spinner's top, which is 20 high.
    void Press(int y) { SendMessageA(window_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, y)); }
    void MoveTo(int y) { SendMessageA(window_, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(4, y)); }
    void Let(int y) { SendMessageA(window_, WM_LBUTTONUP, 0, MAKELPARAM(4, y)); }
    void RightClick(int y) { SendMessageA(window_, WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(4, y)); }
    void Click(int y) {
        Press(y);
        Let(y);
    }

    Message Told(UINT number, BOOL flag) const { return {number, kSpinnerId, flag, spinner_}; }

    HWND parent_ = nullptr;
    HWND edit_ = nullptr;
    HWND window_ = nullptr;
    ISpinnerControl* spinner_ = nullptr;
};

constexpr int kUpper = 3;
constexpr int kLower = 16;

TEST_F(ControlsTest, LinkingShowsTheValueWithAsManyDecimalsAsTheScaleHas) {
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_EQ(spinner_->GetFVal(), 0.075f);
    spinner_->SetValue(0.12345678f, FALSE);
    EXPECT_EQ(EditText(), "0.1235");
    EXPECT_EQ(spinner_->GetFVal(), 0.12345678f) << "showing a value does not round it";
    spinner_->SetValue(0.0f, FALSE);
    EXPECT_EQ(EditText(), "0");
    EXPECT_TRUE(messages.empty());
}

TEST_F(ControlsTest, LimitsHoldForEveryWayOfSetting) {
    spinner_->SetValue(7.0f, FALSE);
    EXPECT_EQ(spinner_->GetFVal(), 0.9999f);
    EXPECT_EQ(EditText(), "0.9999");
    spinner_->SetValue(-1.0f, FALSE);
    EXPECT_EQ(spinner_->GetFVal(), 0.0f);
    TypeOver("5");
    SetFocus(parent_);
    EXPECT_EQ(EditText(), "0.9999");
    Click(kUpper);
    EXPECT_EQ(spinner_->GetFVal(), 0.9999f);
    spinner_->SetLimits(0.0f, 0.5f, FALSE);
    EXPECT_EQ(spinner_->GetFVal(), 0.9999f);
    spinner_->SetLimits(0.0f, 0.5f, TRUE);
    EXPECT_EQ(spinner_->GetFVal(), 0.5f);
}

TEST_F(ControlsTest, NotificationComesWhenAskedForAndTheValueChanges) {
    spinner_->SetValue(0.5f, TRUE);
    EXPECT_EQ(messages, std::vector{Told(CC_SPINNER_CHANGE, FALSE)});
    spinner_->SetValue(0.5f, TRUE);
    EXPECT_EQ(messages.size(), 1u);
}

TEST_F(ControlsTest, TypedTextCountsWhenTheEditIsLeft) {
    TypeOver("0.25");
    EXPECT_EQ(EditText(), "0.25");
    EXPECT_TRUE(messages.empty());
    SetFocus(parent_);
    EXPECT_EQ(messages, std::vector{Told(CC_SPINNER_CHANGE, FALSE)});
    EXPECT_EQ(spinner_->GetFVal(), 0.25f);
    EXPECT_EQ(messages.size(), 1u);
}

TEST_F(ControlsTest, TypedTextCountsWhenTheValueIsAskedFor) {
    TypeOver("0.3000");
    EXPECT_EQ(spinner_->GetFVal(), 0.3f);
    EXPECT_EQ(EditText(), "0.3");
    EXPECT_EQ(messages, std::vector{Told(CC_SPINNER_CHANGE, FALSE)});
}

TEST_F(ControlsTest, TextThatIsNoNumberGivesTheValueBack) {
    TypeOver("abc");
    SetFocus(parent_);
    EXPECT_EQ(EditText(), "0.075");
    SetWindowTextA(edit_, "");
    EXPECT_EQ(spinner_->GetFVal(), 0.075f);
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_TRUE(messages.empty());
}

TEST_F(ControlsTest, ClickOnAHalfStepsByTheScale) {
    Click(kUpper);
    EXPECT_EQ(EditText(), "0.0751");
    EXPECT_EQ(messages,
              (std::vector{Told(CC_SPINNER_BUTTONDOWN, FALSE), Told(CC_SPINNER_CHANGE, FALSE),
                           Told(CC_SPINNER_BUTTONUP, TRUE)}));
    Click(kLower);
    Click(kLower);
    EXPECT_EQ(EditText(), "0.0749");
    EXPECT_EQ(spinner_->GetFVal(), 0.0749f);
}

TEST_F(ControlsTest, ClickTakesWhatWasTypedFirst) {
    TypeOver("0.2");
    Click(kUpper);
    EXPECT_EQ(EditText(), "0.2001");
}

TEST_F(ControlsTest, HoldingRepeats) {
    Press(kUpper);
    RunMessagesFor(900);
    const float held = spinner_->GetFVal();
    EXPECT_GT(held, 0.0752f);
    Let(kUpper);
    RunMessagesFor(600);
    EXPECT_EQ(spinner_->GetFVal(), held);
}

TEST_F(ControlsTest, DraggingChangesByAStepAPixel) {
    Press(kUpper);
    messages.clear();
    MoveTo(kUpper - 50);
    EXPECT_EQ(EditText(), "0.08");
    EXPECT_EQ(messages, std::vector{Told(CC_SPINNER_CHANGE, TRUE)});
    MoveTo(kUpper + 30);
    EXPECT_EQ(EditText(), "0.072");
    Let(kUpper + 30);
    EXPECT_EQ(EditText(), "0.072");
    EXPECT_EQ(messages.back(), Told(CC_SPINNER_BUTTONUP, TRUE));
    MoveTo(kUpper);
    EXPECT_EQ(EditText(), "0.072");
}

TEST_F(ControlsTest, RightClickDuringADragTakesItBack) {
    Press(kUpper);
    MoveTo(kUpper - 50);
    RightClick(kUpper - 50);
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_EQ(messages.back(), Told(CC_SPINNER_BUTTONUP, FALSE));
    EXPECT_NE(GetCapture(), window_);
}

TEST_F(ControlsTest, LosingTheMouseTakesThePressBack) {
    Press(kUpper);
    ReleaseCapture();
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_EQ(messages.back(), Told(CC_SPINNER_BUTTONUP, FALSE));
}

TEST_F(ControlsTest, RightClickAloneChangesNothing) {
    RightClick(kUpper);
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_TRUE(messages.empty());
}

TEST_F(ControlsTest, ArrowKeysStep) {
    SetFocus(window_);
    EXPECT_EQ(GetFocus(), window_);
    EXPECT_TRUE(SendMessageA(window_, WM_GETDLGCODE, 0, 0) & DLGC_WANTARROWS);
    SendMessageA(window_, WM_KEYDOWN, VK_UP, 0);
    SendMessageA(window_, WM_KEYDOWN, VK_UP, 0);
    SendMessageA(window_, WM_KEYDOWN, VK_DOWN, 0);
    SendMessageA(window_, WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_EQ(EditText(), "0.0751");
}

TEST_F(ControlsTest, ClickGivesTheSpinnerTheFocus) {
    SetFocus(edit_);
    Click(kUpper);
    EXPECT_EQ(GetFocus(), window_);
}

TEST_F(ControlsTest, DisablingEndsAPress) {
    Press(kUpper);
    EnableWindow(window_, FALSE);
    EXPECT_EQ(EditText(), "0.075");
    EXPECT_EQ(messages.back(), Told(CC_SPINNER_BUTTONUP, FALSE));
}

TEST_F(ControlsTest, WindowsOfOtherClassesHaveNoSpinner) {
    EXPECT_EQ(GetISpinner(edit_), nullptr);
    EXPECT_EQ(GetISpinner(parent_), nullptr);
    EXPECT_EQ(GetISpinner(nullptr), nullptr);
    ReleaseISpinner(nullptr);
}

TEST_F(ControlsTest, SpinnerOutlivesItsWindowWhileSomebodyHoldsIt) {
    ISpinnerControl* const again = GetISpinner(window_);
    EXPECT_EQ(again, spinner_);
    DestroyWindow(window_);
    EXPECT_EQ(GetISpinner(window_), nullptr);
    EXPECT_EQ(again->GetFVal(), 0.075f);
    again->SetValue(0.5f, TRUE);
    EXPECT_TRUE(messages.empty());
    ReleaseISpinner(again);
    EXPECT_EQ(spinner_->GetFVal(), 0.5f);
    SetFocus(edit_);
    SetFocus(parent_);  // the edit that is left knows no spinner any more
}

TEST_F(ControlsTest, EditMayGoFirst) {
    DestroyWindow(edit_);
    spinner_->SetValue(0.5f, FALSE);
    Click(kUpper);
    EXPECT_EQ(spinner_->GetFVal(), 0.5001f);
}

// How many pixels between these rows have the colour of an enabled arrow.
int ArrowPixels(HWND window, int top, int bottom) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    const HDC context = GetDC(window);
    int pixels = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = 0; x < 12; ++x) {
            pixels += GetPixel(context, x, y) == GetSysColor(COLOR_BTNTEXT) ? 1 : 0;
        }
    }
    ReleaseDC(window, context);
    return pixels;
}

TEST_F(ControlsTest, BothArrowsAreDrawnAndLookDisabledWhenTheyAre) {
    RunMessagesFor(100);
    EXPECT_GT(ArrowPixels(window_, 0, 10), 3);
    EXPECT_GT(ArrowPixels(window_, 10, 20), 3);
    EnableWindow(window_, FALSE);
    EXPECT_EQ(ArrowPixels(window_, 0, 20), 0);
}

TEST_F(ControlsTest, EditHasASunkenBorder) {
    RECT outside, inside;
    GetWindowRect(edit_, &outside);
    GetClientRect(edit_, &inside);
    EXPECT_EQ(outside.right - outside.left - inside.right, 2 * GetSystemMetrics(SM_CXEDGE));
}

TEST_F(ControlsTest, CenterWindowMovesToTheMiddleOfTheParent) {
    const HWND child = CreateWindowExA(0, "Recorder", "", WS_POPUP, 0, 0, 60, 40, parent_, nullptr,
                                       nullptr, nullptr);
    RECT rect;
    CenterWindow(child, parent_);
    GetWindowRect(child, &rect);
    EXPECT_EQ(rect.left, 170);
    EXPECT_EQ(rect.top, 130);
    EXPECT_EQ(rect.right - rect.left, 60);
    // Not off the screen.
    SetWindowPos(parent_, nullptr, -150, -50, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    CenterWindow(child, parent_);
    GetWindowRect(child, &rect);
    EXPECT_EQ(rect.left, 0);
    EXPECT_EQ(rect.top, 0);
    CenterWindow(child, nullptr);
    GetWindowRect(child, &rect);
    EXPECT_EQ(rect.left, (GetSystemMetrics(SM_CXSCREEN) - 60) / 2);
    EXPECT_EQ(rect.top, (GetSystemMetrics(SM_CYSCREEN) - 40) / 2);
    DestroyWindow(child);
}

}  // namespace
