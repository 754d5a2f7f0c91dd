// The module as 3ds Max sees it before an export.
#include <gtest/gtest.h>
#include <impexp.h>
#include <max.h>
#include <plugin.h>

#include <filesystem>

#include "host/sdk/host.h"
#include "host/win32/module.h"
#include "host/win32/user.h"
#include "plugin/module.h"
#include "resources/resource.h"
#include "tests/support/export_run.h"

namespace {

namespace fs = std::filesystem;
using support::LoadedPlugIn;
using support::WorkDirectory;

fs::path RecordingDirectory() {
    return fs::path(HDO_RECORDING_CONVERTER).parent_path();
}

void Offer(const std::vector<std::string>& directories) {
    maxhost::Host::Instance().SetPlugInDirs(directories);
}

class Module {
  public:
    Module() : handle_(LoadLibraryA(HDO_PLUGIN_FILE)) {}
    ~Module() {
        if (handle_ != nullptr) {
            FreeLibrary(handle_);
        }
    }
    HMODULE Handle() const { return handle_; }
    ClassDesc* Description() {
        return win32::ModuleFunction<ClassDesc* (*)(int)>(handle_, "LibClassDesc")(0);
    }

  private:
    HMODULE handle_;
};

// Copies the recording converter, under the name that the plug-in looks for.
std::string DirectoryWithConverter(const fs::path& directory) {
    fs::create_directories(directory);
    fs::copy_file(HDO_RECORDING_CONVERTER,
                  directory / fs::path(HDO_RECORDING_CONVERTER).filename());
    return directory.string();
}

TEST(Module, LibraryFunctionsAnswer) {
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    EXPECT_STREQ(win32::ModuleFunction<const MCHAR* (*)()>(module.Handle(), "LibDescription")(),
                 "HDO Exporter");
    EXPECT_EQ(win32::ModuleFunction<int (*)()>(module.Handle(), "LibNumberClasses")(), 1);
    EXPECT_EQ(win32::ModuleFunction<ULONG (*)()>(module.Handle(), "LibVersion")(), 0x36B02600u);
    const auto classDesc =
        win32::ModuleFunction<ClassDesc* (*)(int)>(module.Handle(), "LibClassDesc");
    EXPECT_NE(classDesc(0), nullptr);
    EXPECT_EQ(classDesc(0), classDesc(0));
    EXPECT_EQ(classDesc(1), nullptr);
    EXPECT_EQ(classDesc(-1), nullptr);
}

TEST(Module, ClassDescriptorAnswers) {
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    ClassDesc* description = module.Description();
    EXPECT_EQ(description->IsPublic(), 1);
    EXPECT_STREQ(description->ClassName(), "HDO Exporter");
    EXPECT_EQ(description->SuperClassID(), 0xA20u);
    EXPECT_TRUE(description->ClassID() == Class_ID(0x35728F0C, 0x4E26450A));
    EXPECT_STREQ(description->Category(), "Standard");
}

TEST(Module, ExporterDescribesItself) {
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    auto* exporter = static_cast<SceneExport*>(module.Description()->Create(FALSE));
    EXPECT_EQ(exporter->ExtCount(), 1);
    EXPECT_STREQ(exporter->Ext(0), "HDO");
    EXPECT_STREQ(exporter->Ext(7), "HDO");
    EXPECT_STREQ(exporter->LongDesc(), "HDO Exporter for Halden 7 Summit");
    EXPECT_STREQ(exporter->ShortDesc(), "HDO Exporter");
    EXPECT_STREQ(exporter->AuthorName(), "Kestrel Works");
    EXPECT_STREQ(exporter->OtherMessage1(), "https://kestrelworks.example/");
    EXPECT_STREQ(exporter->OtherMessage2(), "HDO exporter");
    EXPECT_EQ(exporter->Version(), 100u);
    EXPECT_EQ(exporter->SupportsOptions(0, 0), FALSE);
    EXPECT_EQ(exporter->SupportsOptions(0, 1), TRUE);
    EXPECT_EQ(exporter->SupportsOptions(0, 3), FALSE);
    // All string answers share one buffer.
    const MCHAR* copyright = exporter->CopyrightMessage();
    EXPECT_NE(std::string(copyright).find("Kestrel Works"), std::string::npos);
    EXPECT_EQ(exporter->Ext(0), copyright);
    EXPECT_STREQ(copyright, "HDO");
    delete exporter;
}

TEST(Module, ShowAboutShowsTheAboutBox) {
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    struct : win32::User {
        void OnDialog(win32::Dialog& dialog) override {
            titles.push_back(dialog.Title());
            dialog.Click(1);
            EXPECT_FALSE(dialog.IsOpen());
        }
        void OnMessageBox(const std::string& title, const std::string&, unsigned) override {
            ADD_FAILURE() << title;
        }
        std::vector<std::string> titles;
    } user;
    win32::SetUser(&user);
    auto* exporter = static_cast<SceneExport*>(module.Description()->Create(FALSE));
    exporter->ShowAbout(nullptr);
    delete exporter;
    win32::SetUser(nullptr);
    EXPECT_EQ(user.titles, std::vector<std::string>{"About Max to Halden exporter"});
}

using EntryPoint = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

#ifdef _WIN32
// Windows knows it by the module's headers. The process' start and end go through the C library as
// well, which does not take them twice.
EntryPoint EntryPointOf(HMODULE module) {
    const auto* const base = reinterpret_cast<const char*>(module);
    const auto& dosHeader = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dosHeader.e_lfanew);
    return reinterpret_cast<EntryPoint>(
        const_cast<char*>(base + headers.OptionalHeader.AddressOfEntryPoint));
}
constexpr DWORD kReasons[] = {DLL_THREAD_ATTACH, DLL_THREAD_DETACH};
#else
EntryPoint EntryPointOf(HMODULE module) {
    return win32::ModuleFunction<EntryPoint>(module, "DllMain");
}
constexpr DWORD kReasons[] = {DLL_PROCESS_DETACH, DLL_PROCESS_ATTACH, DLL_THREAD_ATTACH,
                              DLL_THREAD_DETACH};
#endif

TEST(Module, SecondCallOfTheEntryPointStoresTheInstanceAlone) {
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    const EntryPoint entry = EntryPointOf(module.Handle());
    ASSERT_NE(entry, nullptr);
    const auto describe =
        win32::ModuleFunction<const MCHAR* (*)()>(module.Handle(), "LibDescription");
    Offer({});  // a second search would find no converter
    for (const DWORD reason : kReasons) {
        EXPECT_EQ(entry(nullptr, reason, nullptr), TRUE) << reason;
        EXPECT_EQ(describe(), nullptr) << "no instance, no texts";
        EXPECT_EQ(entry(module.Handle(), reason, nullptr), TRUE) << reason;
        EXPECT_STREQ(describe(), "HDO Exporter");
    }
}

TEST(Module, ConverterWithoutEntryPointsIsNotNoticed) {
    const WorkDirectory directory;
    fs::copy_file(SILENT_CONVERTER,
                  directory.Path() / fs::path(HDO_RECORDING_CONVERTER).filename());
    Offer({directory.Path().string()});
    EXPECT_NE(Module().Handle(), nullptr);
}

TEST(GetString, IsNullWithoutAnInstanceAndForAMissingText) {
    ASSERT_EQ(g_moduleInstance, nullptr);
    EXPECT_EQ(GetString(IDS_NAME), nullptr);
    Offer({RecordingDirectory().string()});
    Module module;
    ASSERT_NE(module.Handle(), nullptr);
    g_moduleInstance = module.Handle();
    EXPECT_STREQ(GetString(IDS_NAME), "HDO Exporter");
    EXPECT_STREQ(GetString(IDS_VERSION), "HDO Exporter Version 1.0");
    EXPECT_STREQ(GetString(IDS_COPYRIGHT), "Copyright (C) 2026 Kestrel Works");
    EXPECT_EQ(GetString(99), nullptr);
    g_moduleInstance = nullptr;
}

TEST(Module, DoesNotLoadWithoutAConverter) {
    const WorkDirectory directory;
    Offer({});
    EXPECT_EQ(Module().Handle(), nullptr);
    Offer({directory.Path().string(), (directory.Path() / "missing").string()});
    EXPECT_EQ(Module().Handle(), nullptr);
}

TEST(Module, ConverterThatDoesNotLoadIsPassedOver) {
    const WorkDirectory directory;
    fs::create_directory(directory.Path() / "broken");
    support::WriteFile(directory.Path() / "broken" / fs::path(HDO_RECORDING_CONVERTER).filename(),
                       "no library");
    const std::string broken = (directory.Path() / "broken").string();
    Offer({broken});
    EXPECT_EQ(Module().Handle(), nullptr);
    const std::string good = DirectoryWithConverter(directory.Path() / "good");
    Offer({broken, good});
    EXPECT_NE(Module().Handle(), nullptr);
}

TEST(Module, FirstDirectoryWithAConverterWins) {
    const WorkDirectory directory;
    const std::string empty = directory.Path().string();
    const std::string first = DirectoryWithConverter(directory.Path() / "first");
    const std::string second = DirectoryWithConverter(directory.Path() / "second");
    support::ExportChoices choices;
    choices.plugInDirs = {empty, first, second};
    const support::ExportRun run = support::Export({}, choices, directory);
    ASSERT_FALSE(run.converterCalls.empty());
    EXPECT_EQ(run.converterCalls[0].rfind("InitSpecialHalden(\"" + first + "\", ", 0), 0u)
        << run.converterCalls[0];
}

// A path below `directory` of that many characters.
fs::path OfLength(const fs::path& directory, std::size_t length) {
    return directory / std::string(length - directory.string().size() - 1, 'd');
}

TEST(Module, DirectoryThatDoesNotFitIsPassedOver) {
    const WorkDirectory directory;
    // With "/haldenexport.dll" and its end, 243 characters are one too many for the field of 260.
    const std::string fits = DirectoryWithConverter(OfLength(directory.Path() / "fits", 242));
    const std::string tooLong = DirectoryWithConverter(OfLength(directory.Path() / "long", 243));
    Offer({fits});
    EXPECT_NE(Module().Handle(), nullptr);
    Offer({tooLong});
    EXPECT_EQ(Module().Handle(), nullptr);
    Offer({tooLong, DirectoryWithConverter(directory.Path() / "second")});
    EXPECT_NE(Module().Handle(), nullptr);
}

}  // namespace
