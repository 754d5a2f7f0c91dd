// Whole runs in this process, with a plug-in that does what the test says.
#include "host/app/run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "host/app/exit_status.h"
#include "host/sdk/host.h"
#include "tests/support/kta_bytes.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

#ifdef _WIN32
constexpr bool kIsWindows = true;
void SetVariable(const char* name, const std::string& value) {
    _putenv_s(name, value.c_str());
}
#else
constexpr bool kIsWindows = false;
void SetVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}
#endif

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RunTest : public InDirectory {
  protected:
    void SetUp() override {
        Write("s.maxscene.json",
              R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "b", "parent": 0}]})");
        plugIn_.doExport = [this](const std::string& name, DWORD options) {
            exported_.push_back(std::filesystem::path(name).filename().string());
            options_ = options;
            return WriteBoth(name);
        };
    }

    static int WriteBoth(const std::string& name) {
        Write(name + "temp1", support::ActorBeginning());
        Write(name + "temp2", support::FileHeader(false));
        return IMPEXP_SUCCESS;
    }

    Outcome Export(std::vector<std::string> arguments = {},
                   const std::string& converterDir = SILENT_CONVERTER_DIR) {
        const std::vector<std::string> places = {"--plugin",       FAKE_PLUGIN,    "--plugin-dir",
                                                 converterDir,     "--config-dir", "cfg",
                                                 "s.maxscene.json"};
        arguments.insert(arguments.end(), places.begin(), places.end());
        return RunProgram(arguments);
    }

    std::string First() const { return Path("s.hdotemp1").string(); }
    std::string Second() const { return Path("s.hdotemp2").string(); }

    FakePlugInBehaviour& plugIn_ = ResetFakePlugIn();
    std::vector<std::string> exported_;
    DWORD options_ = 99;
};

TEST_F(RunTest, ExportsAndSumsUp) {
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(exported_, ElementsAre("s.hdo"));
    EXPECT_EQ(options_, 0u);
    EXPECT_THAT(
        Lines(outcome.out),
        ElementsAre(First() + ": actor file, 127 bytes, 1 chunk (1 material)",
                    Second() + ": motion file, 7 bytes, 0 chunks",
                    Path("s.hdo.log").string() + ": log",
                    "options: --no-export-hidden --no-non-renderable --morphers "
                    "--optimize-skin --weight-threshold 0.075 --no-motions-for-hidden "
                    "--no-sample-animation",
                    "exported 0 of 2 nodes", "not exported: \"a\": left out by the exporter",
                    "not exported: \"b\": left out by the exporter"));
    EXPECT_THAT(Names(),
                ElementsAre("cfg", "s.hdo.log", "s.hdotemp1", "s.hdotemp2", "s.maxscene.json"));
    EXPECT_EQ(plugIn_.exporters, 0);
}

TEST_F(RunTest, QuietRunsSayNothing) {
    const Outcome outcome = Export({"-q"});
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.error, "");
}

TEST_F(RunTest, HostIsSetUpForThePlugIn) {
    plugIn_.doExport = [this](const std::string& name, DWORD) {
        Interface* const ip = GetCOREInterface();
        EXPECT_STREQ(ip->GetDir(APP_PLUGCFG_DIR), Path("cfg").string().c_str());
        EXPECT_TRUE(std::filesystem::is_directory(Path("cfg")));
        EXPECT_EQ(ip->GetPlugInEntryCount(), 1);
        EXPECT_EQ(ip->GetPlugInDir(0), Native(SILENT_CONVERTER_DIR));
        EXPECT_EQ(ip->GetRootNode()->NumberOfChildren(), 1);
        EXPECT_EQ(GetFrameRate(), 25);
        EXPECT_EQ(GetTicksPerFrame(), 192);
        return WriteBoth(name);
    };
    EXPECT_EQ(Export({"--frame-rate", "25"}).status, kExitDone);
}

TEST_F(RunTest, SelectionIsExportedOnRequest) {
    plugIn_.doExport = [this](const std::string& name, DWORD options) {
        options_ = options;
        EXPECT_EQ(GetCOREInterface()->GetSelNodeCount(), 1);
        EXPECT_STREQ(GetCOREInterface()->GetSelNode(0)->GetName(), "b");
        return WriteBoth(name);
    };
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--select", "b"}, {"--selected", "--select", "b"}}) {
        EXPECT_EQ(Export(arguments).status, kExitDone);
        EXPECT_EQ(options_, DWORD{SCENE_EXPORT_SELECTED});
    }
}

TEST_F(RunTest, PlugInIsAskedWhetherItExportsSelections) {
    plugIn_.supportsSelection = false;
    const Outcome outcome = Export({"--selected", "--allow-empty"});
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(outcome.error,
              "hdo-export: --selected: " + Native(FAKE_PLUGIN) + " does not export selections\n");
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_EQ(plugIn_.exporters, 0);
}

TEST_F(RunTest, BadScenesLeaveNothingBehind) {
    Write("s.maxscene.json", "{");
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre(testing::StartsWith("hdo-export: s.maxscene.json: line 1, column ")));
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, UnknownNodesLeaveNothingBehind) {
    const Outcome outcome = Export({"--select", "nobody"});
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(outcome.error,
              "hdo-export: --select: \"nobody\", expected a node's name (--list shows them)\n");
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, ExportsThatCannotBeginSayWhy) {
    const Outcome outcome = Export({"-o", "no/x.hdo"});
    EXPECT_EQ(outcome.status, kExitExportFailed);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.error, "hdo-export: " + Path("no/x.hdo").make_preferred().string() +
                                 ": the export failed: the directory " + Path("no").string() +
                                 " does not exist\n");
    EXPECT_THAT(exported_, IsEmpty());
}

TEST_F(RunTest, FailedExportsLeaveFormerFilesUnlessPartsAreWanted) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        Write(name + "temp1", "begun");
        return IMPEXP_FAIL;
    };
    Write(First(), "earlier");
    const std::string failed = "hdo-export: " + Path("s.hdo").string() +
                               ": the export failed: " + Second() + " cannot be written";
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitExportFailed);
    EXPECT_THAT(
        Lines(outcome.error),
        ElementsAre(failed,
                    "hdo-export: " + Path("s.hdo").string() +
                        ": nothing was put in place (--keep-partial does so all the same)",
                    "hdo-export: " + First() + ": made by an earlier export, not by this one"));
    EXPECT_EQ(Read(First()), "earlier");
    EXPECT_THAT(Names(), ElementsAre("cfg", "s.hdotemp1", "s.maxscene.json"));
    const Outcome kept = Export({"--keep-partial"});
    EXPECT_EQ(kept.status, kExitExportFailed);
    EXPECT_THAT(Lines(kept.error),
                ElementsAre(failed, "hdo-export: " + First() +
                                        ": left behind by the failed export, not a whole one"));
    EXPECT_EQ(Read(First()), "begun");
}

TEST_F(RunTest, MissingMemoryIsNotAFilesFault) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        Write(name + "temp1", "begun");
        Write("KTAExporter.log", "log\n*** Out of memory: the export is given up ***\n");
        return IMPEXP_FAIL;
    };
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitExportFailed);
    EXPECT_EQ(Lines(outcome.error).at(0),
              "hdo-export: " + Path("s.hdo").string() +
                  ": the export failed: it needs more memory than there is");
}

TEST_F(RunTest, ExporterWorksInADirectoryOfItsOwn) {
    std::filesystem::path directory;
    plugIn_.doExport = [&](const std::string& name, DWORD) {
        directory = std::filesystem::current_path();
        EXPECT_EQ(directory.parent_path(), directory_);
        return WriteBoth(name);
    };
    EXPECT_EQ(Export({"--log", "l.log"}).status, kExitDone);
    EXPECT_EQ(std::filesystem::current_path(), directory_);
    EXPECT_FALSE(std::filesystem::exists(directory));
    EXPECT_EQ(Lines(Read("l.log")), std::vector<std::string>{"log"});
    EXPECT_FALSE(std::filesystem::exists("s.hdo.log"));
}

TEST_F(RunTest, LogThatIsAskedForIsWrittenAfterAFailureToo) {
    plugIn_.doExport = [](const std::string&, DWORD) { return IMPEXP_FAIL; };
    EXPECT_EQ(Export({"--log", "l.log"}).status, kExitExportFailed);
    EXPECT_EQ(Lines(Read("l.log")), std::vector<std::string>{"log"});
}

TEST_F(RunTest, LogThatCannotBeWrittenIsStatus4) {
    const Outcome outcome = Export({"--log", "no/l.log"});
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(
        outcome.error,
        testing::StartsWith("hdo-export: " + Path("no/l.log").make_preferred().string() + ": "));
    EXPECT_FALSE(std::filesystem::exists(First()));
}

TEST_F(RunTest, BrokenFilesAreFound) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        WriteBoth(name);
        Write(name + "temp2", "KTA");
        return IMPEXP_SUCCESS;
    };
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre(testing::StartsWith("hdo-export: " + Second() + ": offset "),
                            HasSubstr("nothing was put in place")));
    EXPECT_EQ(outcome.out, "");
    EXPECT_FALSE(std::filesystem::exists(First()));
    const Outcome kept = Export({"--keep-partial"});
    EXPECT_EQ(kept.status, kExitFaultyOutput);
    EXPECT_THAT(kept.out, testing::StartsWith(First() + ": actor file"));
    EXPECT_EQ(Read(Second()), "KTA");
}

TEST_F(RunTest, ComplaintsOfTheConverterAreFaults) {
    const Outcome outcome = Export({}, COMPLAINING_CONVERTER_DIR);
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    EXPECT_THAT(Lines(outcome.error),
                ElementsAre("hdo-export: first complaint", "hdo-export: second complaint",
                            HasSubstr("nothing was put in place")));
}

TEST_F(RunTest, PlugInsThatDoNotLoadEndTheRun) {
    const Outcome outcome = RunProgram({"--plugin", REFUSING_PLUGIN, "--plugin-dir", ".",
                                        "--config-dir", "cfg", "s.maxscene.json"});
    EXPECT_EQ(outcome.status, kExitNoPlugIn);
    EXPECT_EQ(Lines(outcome.error).size(), 1u);
    EXPECT_THAT(outcome.error, HasSubstr("no plug-in directory holds haldenexport: "));
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, CancelInTheProgressBarIsSaid) {
    std::vector<BOOL> answers;
    plugIn_.doExport = [&](const std::string& name, DWORD) {
        Interface* const ip = GetCOREInterface();
        answers.clear();
        for (int update = 1; update <= 3; ++update) {
            ip->ProgressUpdate(update);
            answers.push_back(ip->GetCancel());
        }
        return WriteBoth(name);
    };
    const Outcome outcome = Export({"--cancel-after", "2"});
    EXPECT_THAT(answers, ElementsAre(FALSE, TRUE, TRUE));
    EXPECT_EQ(outcome.status, kExitCancelled);
    EXPECT_THAT(Lines(outcome.error), ElementsAre("hdo-export: " + Path("s.hdo").string() +
                                                      ": cancelled in the progress bar",
                                                  HasSubstr("nothing was put in place")));
    EXPECT_FALSE(std::filesystem::exists(First()));
    EXPECT_EQ(Export({"--cancel-after", "2", "--keep-partial"}).status, kExitCancelled);
    EXPECT_TRUE(std::filesystem::exists(First()));
    EXPECT_EQ(Export().error, "") << "the next export is free";
    EXPECT_THAT(answers, ElementsAre(FALSE, FALSE, FALSE));
}

TEST_F(RunTest, ProgressIsShownOnRequest) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        char title[] = "Working";
        Interface* const ip = GetCOREInterface();
        ip->ProgressStart(title, TRUE, nullptr, nullptr);
        ip->ProgressUpdate(40);
        ip->ProgressUpdate(80);
        ip->ProgressEnd();
        return WriteBoth(name);
    };
    const std::string shown = Export({"--progress", "always"}).error;
    EXPECT_THAT(shown, HasSubstr("] 100% Reading s.maxscene.json"));
    EXPECT_THAT(shown, HasSubstr("]  40% Working"));
    EXPECT_THAT(shown, testing::Not(HasSubstr("80%"))) << "what begins there did not end";
    EXPECT_EQ(Export().error, "") << "not a terminal";
    EXPECT_EQ(Export({"--progress", "never"}).error, "");
}

#ifndef _WIN32

TEST_F(RunTest, DialogsForPeopleAreRefused) {
    for (const char* const name : {"--about", "--show-dialog"}) {
        const Outcome outcome = Export({name});
        EXPECT_EQ(outcome.status, kExitRefused);
        EXPECT_EQ(outcome.error,
                  "hdo-export: " + std::string(name) +
                      ": no dialog can be shown to a person here, expected Windows with a "
                      "display\n");
    }
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

#endif

TEST_F(RunTest, ConverterWithoutAnEntryPointEndsTheRun) {
    const Outcome outcome = Export({}, LACKING_CONVERTER_DIR);
    EXPECT_EQ(outcome.status, kExitNoPlugIn);
    EXPECT_EQ(Lines(outcome.error).size(), 1u);
    EXPECT_THAT(outcome.error, HasSubstr("does not export WriteKTMotionFile\n"));
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, RunsLeaveTheUsersSettingsAloneUnlessAskedFor) {
    std::filesystem::create_directories("user/hdo-export");
    const std::string user = "user/hdo-export/KTAExp2.cfg";
    Write(user, "former");
    std::string found;
    plugIn_.doExport = [&](const std::string& name, DWORD) {
        const std::filesystem::path settings =
            std::filesystem::path(GetCOREInterface()->GetDir(APP_PLUGCFG_DIR)) / "KTAExp2.cfg";
        found = std::filesystem::exists(settings) ? Read(settings) : "";
        Write(settings, "saved");
        return WriteBoth(name);
    };
    const char* const variable = kIsWindows ? "APPDATA" : "XDG_CONFIG_HOME";
    SetVariable(variable, Path("user").string());
    const auto run = [](std::vector<std::string> more) {
        more.insert(more.end(), {"--plugin", FAKE_PLUGIN, "--plugin-dir", SILENT_CONVERTER_DIR,
                                 "s.maxscene.json"});
        return RunProgram(more).status;
    };
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"--defaults"}}) {
        EXPECT_EQ(run(arguments), kExitDone);
        EXPECT_EQ(found, "");
        EXPECT_EQ(Read(user), "former");
    }
    EXPECT_EQ(run({"--saved-settings"}), kExitDone);
    EXPECT_EQ(found, "former");
    EXPECT_EQ(Read(user), "saved");
    EXPECT_EQ(Export({"--defaults"}).status, kExitDone);
    EXPECT_EQ(Read("cfg/KTAExp2.cfg"), "saved");
    SetVariable(variable, "");
}

TEST_F(RunTest, OutputThatIsADirectoryIsRefusedBeforeAnythingIsDone) {
    for (const char* const output : {".", "new/"}) {
        const Outcome outcome = Export({"-o", output, "--save-scene", "copy.maxscene.json"});
        EXPECT_EQ(outcome.status, kExitRefused);
        EXPECT_EQ(outcome.error, "hdo-export: " + std::string(output) +
                                     ": names a directory, expected a file to export to\n");
    }
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, OnlyALogOfThisExportIsNamed) {
    plugIn_.writesLog = false;
    const std::string log = Path("s.hdo.log").string();
    Write(log, "of an earlier export");
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.error,
              "hdo-export: " + log + ": warning: this export could not write its log\n");
    EXPECT_THAT(outcome.out, testing::Not(HasSubstr(log)));
}

TEST_F(RunTest, EarlierFilesAreNamedWhenThereIsNoExport) {
    Write("x.hdotemp1", support::FileHeader(true));
    const std::string line = "hdo-export: " + Path("x.hdotemp1").string() +
                             ": made by an earlier export, not by this one";
    const Outcome refused = Export({"-o", "x.hdo", "--select", "nobody"});
    EXPECT_EQ(refused.status, kExitRefused);
    EXPECT_THAT(Lines(refused.error), ElementsAre(HasSubstr("--select: "), line));
    const Outcome noPlugIn = RunProgram({"-o", "x.hdo", "--plugin", REFUSING_PLUGIN, "--plugin-dir",
                                         ".", "--config-dir", "cfg", "s.maxscene.json"});
    EXPECT_EQ(noPlugIn.status, kExitNoPlugIn);
    EXPECT_THAT(Lines(noPlugIn.error), ElementsAre(HasSubstr("did not load"), line));
    EXPECT_EQ(Lines(RunProgram({"--list", "--select", "nobody", "s.maxscene.json"}).error).size(),
              1u);
}

TEST_F(RunTest, NamesThatTheFilesCannotTellAreWarnedOf) {
    Write("s.maxscene.json", R"({"maxscene": 1, "nodes": [{"name": "a"}, {"name": "a"}]})");
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.error,
              "hdo-export: s.maxscene.json: warning: several nodes of one name, and the files tell "
              "parents by name: \"a\" (2 nodes)\n");
}

TEST_F(RunTest, MaterialsWithoutEndAreRefused) {
    std::string materials;
    for (int i = 1; i < 64; ++i) {
        const std::string next = std::to_string(i);
        materials += R"({"class": "multi", "subMaterials": [)" + next + ", " + next + "]}, ";
    }
    Write("s.maxscene.json",
          R"({"maxscene": 1, "materials": [)" + materials +
              R"({"class": "standard"}], "nodes": [{"name": "a", "material": 0}]})");
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitRefused);
    EXPECT_EQ(outcome.error,
              "hdo-export: s.maxscene.json: more than 1000000 materials, each counted wherever it "
              "is referred to, expected at most as many\n");
}

TEST_F(RunTest, ManyFaultsAreCounted) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        WriteBoth(name);
        support::Bytes bytes;
        bytes.Text(support::FileHeader(true));
        for (int i = 0; i < 25; ++i) {
            bytes.U32(0)
                .U32(632)
                .U32(3)
                .Text(std::string(624, '\0'))
                .U8(2)
                .Text(std::string(7, '\0'));
        }
        Write(name + "temp1", bytes.Str());
        return IMPEXP_SUCCESS;
    };
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitFaultyOutput);
    const std::vector<std::string> lines = Lines(outcome.error);
    ASSERT_EQ(lines.size(), 22u);
    EXPECT_THAT(lines[19], HasSubstr("bone flag is 2"));
    EXPECT_EQ(lines[20], "hdo-export: " + First() + ": and 5 more faults");
}

TEST_F(RunTest, InterruptEndsTheExportAsCancelDoes) {
    int signal = SIGINT;
    plugIn_.doExport = [&](const std::string& name, DWORD) {
        EXPECT_FALSE(GetCOREInterface()->GetCancel());
        std::raise(signal);
        EXPECT_TRUE(GetCOREInterface()->GetCancel());
        return WriteBoth(name);
    };
    for (const auto& [raised, status] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        signal = raised;
        const Outcome outcome = Export();
        EXPECT_EQ(outcome.status, status);
        EXPECT_THAT(Lines(outcome.error),
                    ElementsAre("hdo-export: " + Path("s.hdo").string() + ": interrupted",
                                HasSubstr("nothing was put in place")));
        EXPECT_FALSE(std::filesystem::exists(First()));
        EXPECT_EQ(Export({"--keep-partial"}).status, status);
        EXPECT_TRUE(std::filesystem::exists(First()));
        std::filesystem::remove(First());
        std::filesystem::remove(Second());
    }
}

TEST_F(RunTest, ListPrintsAndExportsNothing) {
    const Outcome outcome = RunProgram({"--list", "s.maxscene.json"});
    EXPECT_EQ(outcome.status, kExitDone);
    EXPECT_EQ(outcome.out, "node\t0\t0\thelper\ta\nnode\t1\t1\thelper\tb\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(Names(), ElementsAre("s.maxscene.json"));
}

TEST_F(RunTest, SavingASceneExportsOnlyOnRequest) {
    EXPECT_EQ(Export({"--save-scene", "copy.maxscene.json"}).status, kExitDone);
    EXPECT_THAT(exported_, IsEmpty());
    EXPECT_THAT(Names(), ElementsAre("copy.maxscene.json", "s.maxscene.json"));
    EXPECT_EQ(Export({"--save-scene", "copy.maxscene.json", "-o", "x.hdo"}).status, kExitDone);
    EXPECT_THAT(exported_, ElementsAre("x.hdo"));
}

TEST_F(RunTest, SavedSceneListsAlike) {
    Export({"--save-scene", "copy.maxscene.json"});
    EXPECT_EQ(RunProgram({"--list", "copy.maxscene.json"}).out,
              RunProgram({"--list", "s.maxscene.json"}).out);
}

TEST_F(RunTest, HelpAndVersionArePrinted) {
    const Outcome help = RunProgram({"--help"});
    EXPECT_EQ(help.status, kExitDone);
    EXPECT_THAT(help.out, HasSubstr("Usage: hdo-export [OPTIONS] [SCENE]"));
    EXPECT_EQ(help.error, "");
    EXPECT_EQ(RunProgram({"--version"}).out, "hdo-export " HDO_VERSION "\n");
    const Outcome none = RunProgram({});
    EXPECT_EQ(none.status, kExitRefused);
    EXPECT_THAT(none.error, testing::StartsWith("hdo-export: SCENE: none given"));
}

TEST_F(RunTest, MessageBoxesAreOneLineEach) {
    plugIn_.doExport = [](const std::string&, DWORD) {
        MessageBoxA(nullptr, "First line.\nSecond line.", "Modifier Order Issue",
                    MB_OK | MB_ICONEXCLAMATION);
        return IMPEXP_FAIL;
    };
    Write(First(), support::FileHeader(true));
    const Outcome outcome = Export();
    EXPECT_EQ(outcome.status, kExitExportFailed);
    const std::string file = "hdo-export: " + Path("s.hdo").string() + ": ";
    EXPECT_THAT(
        Lines(outcome.error),
        ElementsAre(file + "Modifier Order Issue: First line. Second line.",
                    file + "the export failed: the exporter says why above",
                    "hdo-export: " + First() + ": made by an earlier export, not by this one"));
}

#ifndef _WIN32

TEST_F(RunTest, DebuggerTextIsCopiedOnlyWhenAskedFor) {
    plugIn_.doExport = [](const std::string& name, DWORD) {
        OutputDebugStringA("- Exporting node 'a'\n");
        return WriteBoth(name);
    };
    EXPECT_EQ(Export().error, "");
    EXPECT_EQ(Export({"-v"}).error, "hdo-export: " + Path("cfg/KTAExp2.cfg").string() +
                                        ": settings file\n- Exporting node 'a'\n");
}

#endif

}  // namespace
}  // namespace maxhost::app
