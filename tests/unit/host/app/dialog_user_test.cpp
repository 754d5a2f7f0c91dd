// The dialogs' user in front of dialogs that the tests play.
#include "host/app/dialog_user.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

#include "host/app/console.h"

namespace maxhost::app {
namespace {

using testing::ElementsAre;

struct Control {
    bool isEnabled = true;
    bool isChecked = false;
    bool isStuck = false;
    std::string text;
};

class PlayedDialog : public win32::Dialog {
  public:
    std::string Title() const override { return "played"; }
    bool IsOpen() const override { return isOpen; }
    bool IsEnabled(int id) const override {
        return controls.contains(id) && controls.at(id).isEnabled;
    }
    bool IsChecked(int id) const override {
        return controls.contains(id) && controls.at(id).isChecked;
    }
    std::string Text(int id) const override {
        return controls.contains(id) ? controls.at(id).text : std::string();
    }
    int DefaultButton() const override { return defaultButton; }

    void Click(int id) override {
        if (!isOpen || !IsEnabled(id)) {
            return;
        }
        actions.push_back("click " + std::to_string(id));
        Control& control = controls.at(id);
        control.isChecked = control.isChecked != !control.isStuck;
        if (onClick) {
            onClick(id);
        }
    }
    void Type(int id, const std::string& text) override {
        actions.push_back("type " + std::to_string(id) + " " + text);
    }
    void Command(int) override { ADD_FAILURE() << "no person sends commands"; }

    bool isOpen = true;
    int defaultButton = 3;
    std::map<int, Control> controls;
    std::vector<std::string> actions;
    std::function<void(int)> onClick;
};

class DialogUserTest : public testing::Test {
  protected:
    DialogUserTest() {
        for (const int id : {2, 3, 1032, 1034, 1037, 1038, 1042, 1044, 1049, 1052}) {
            dialog_.controls[id];
        }
        dialog_.onClick = [this](int id) { dialog_.isOpen = id != 2 && id != 3; };
    }

    static DialogChoices Choices(std::vector<std::string> arguments) {
        arguments.emplace_back("x.fbx");
        return ParseCommandLine(arguments).options.value().choices;
    }

    DialogUser& Answer(const std::vector<std::string>& arguments, bool cancels = false) {
        user_.emplace(console_, "x.hdo", Choices(arguments), cancels);
        user_->OnDialog(dialog_);
        return *user_;
    }

    PlayedDialog dialog_;
    std::ostringstream out_, error_;
    Console console_{out_, error_};
    std::optional<DialogUser> user_;
};

TEST_F(DialogUserTest, WithoutChoicesExportIsPressed) {
    const DialogUser& user = Answer({});
    EXPECT_THAT(dialog_.actions, ElementsAre("click 3"));
    EXPECT_FALSE(user.HasCancelled());
    EXPECT_FALSE(user.WasRefused());
    EXPECT_EQ(error_.str(), "");
}

TEST_F(DialogUserTest, ChoicesWithoutADialogAreNoticed) {
    EXPECT_FALSE(DialogUser(console_, "x.hdo", Choices({}), false).LacksDialog());
    EXPECT_TRUE(DialogUser(console_, "x.hdo", Choices({}), true).LacksDialog());
    const std::vector<std::string> arguments = {"--sample-rate", "5"};
    EXPECT_TRUE(DialogUser(console_, "x.hdo", Choices(arguments), false).LacksDialog());
    EXPECT_FALSE(Answer(arguments).LacksDialog());
    dialog_.isOpen = true;
    dialog_.controls[3].isEnabled = false;  // another dialog
    dialog_.defaultButton = 2;
    EXPECT_TRUE(Answer(arguments).LacksDialog());
    EXPECT_EQ(dialog_.actions.back(), "click 2");
}

TEST_F(DialogUserTest, CancelIsPressedAtOnce) {
    const DialogUser& user = Answer({"--morphers"}, true);
    EXPECT_THAT(dialog_.actions, ElementsAre("click 2"));
    EXPECT_TRUE(user.HasCancelled());
    EXPECT_FALSE(user.WasRefused());
}

TEST_F(DialogUserTest, EveryChoiceHasItsControl) {
    Answer({"--export-hidden", "--non-renderable", "--morphers", "--optimize-skin",
            "--weight-threshold", "0.1", "--motions-for-hidden", "--sample-animation",
            "--sample-rate", "7"});
    EXPECT_THAT(dialog_.actions,
                ElementsAre("click 1032", "click 1038", "click 1052", "click 1034", "click 1037",
                            "click 1049", "type 1044 0.1", "type 1042 7", "click 3"));
}

TEST_F(DialogUserTest, BoxesInTheWishedStateAreLeftAlone) {
    dialog_.controls[1032].isChecked = true;
    dialog_.controls[1038].isChecked = true;
    Answer({"--export-hidden", "--no-non-renderable", "--no-morphers"});
    EXPECT_THAT(dialog_.actions, ElementsAre("click 1038", "click 3"));
}

TEST_F(DialogUserTest, SampleRatesAreTypedAsGiven) {
    Answer({"--sample-rate", "-5"});
    EXPECT_THAT(dialog_.actions, ElementsAre("type 1042 -5", "click 3"));
}

TEST_F(DialogUserTest, DisabledEditsAreSaidAndTheDialogIsCancelled) {
    dialog_.controls[1042].isEnabled = false;
    EXPECT_TRUE(Answer({"--morphers", "--sample-rate", "3"}).WasRefused());
    EXPECT_THAT(dialog_.actions, ElementsAre("click 1052", "click 2"));
    EXPECT_EQ(error_.str(),
              "hdo-export: --sample-rate: is disabled in the options dialog, expected "
              "--sample-animation beside it\n");
}

TEST_F(DialogUserTest, EditsMayBeEnabledByABoxThatIsClickedBefore) {
    dialog_.controls[1044].isEnabled = false;
    dialog_.onClick = [this](int id) {
        dialog_.controls[1044].isEnabled = dialog_.IsChecked(1034);
        dialog_.isOpen = id != 3;
    };
    EXPECT_FALSE(Answer({"--weight-threshold", "0.9999", "--optimize-skin"}).WasRefused());
    EXPECT_THAT(dialog_.actions, ElementsAre("click 1034", "type 1044 0.9999", "click 3"));
}

TEST_F(DialogUserTest, BoxesThatDoNotTakeTheChoiceAreSaid) {
    dialog_.controls[1052].isStuck = true;
    EXPECT_TRUE(Answer({"--morphers"}).WasRefused());
    EXPECT_FALSE(dialog_.isOpen);
    EXPECT_EQ(error_.str(),
              "hdo-export: --morphers: the options dialog does not let it be chosen\n");
    dialog_.controls.erase(1052);
    dialog_.isOpen = true;
    EXPECT_TRUE(Answer({"--no-morphers"}).WasRefused()) << "no such box";
}

TEST_F(DialogUserTest, RefusalWithAMessageBoxIsReportedOnce) {
    dialog_.onClick = [this](int id) {
        if (id == 3) {
            user_->OnMessageBox("Invalid value", "No.\nNot so.", 0);
        }
        dialog_.isOpen = id != 2;
    };
    const DialogUser& user = Answer({});
    EXPECT_TRUE(user.WasRefused());
    EXPECT_FALSE(user.HasCancelled());
    EXPECT_EQ(user.MessageBoxes(), 1);
    EXPECT_THAT(dialog_.actions, ElementsAre("click 3", "click 2"));
    EXPECT_EQ(error_.str(), "hdo-export: x.hdo: Invalid value: No. Not so.\n");
}

TEST_F(DialogUserTest, DialogThatStaysOpenInSilenceIsReported) {
    dialog_.onClick = [this](int id) { dialog_.isOpen = id != 2; };
    EXPECT_TRUE(Answer({}).WasRefused());
    EXPECT_EQ(error_.str(), "hdo-export: x.hdo: the options dialog stays open after Export\n");
}

TEST_F(DialogUserTest, OtherDialogsGetTheirDefaultButton) {
    dialog_.controls.erase(3);
    dialog_.controls[1];
    dialog_.defaultButton = 1;
    EXPECT_FALSE(Answer({}, true).HasCancelled());
    EXPECT_THAT(dialog_.actions, ElementsAre("click 1"));
}

}  // namespace
}  // namespace maxhost::app
