#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/win32/module.h"
#include "tests/support/temporary_directory.h"

namespace {

namespace fs = std::filesystem;

const std::string kDir = MODULE_DIR;
const std::string kAccepting = kDir + "/win32_test_accepting.dll";
const std::string kPlain = kDir + "/win32_test_plain.dll";

int AttachCalls(HMODULE module) {
    return win32::ModuleFunction<int (*)()>(module, "AttachCalls")();
}

void SetRefusal(bool refuse) {
#ifdef _WIN32
    SetEnvironmentVariableA("WIN32_TEST_REFUSE", refuse ? "1" : nullptr);
    _putenv(refuse ? "WIN32_TEST_REFUSE=1" : "WIN32_TEST_REFUSE=");
#else
    refuse ? setenv("WIN32_TEST_REFUSE", "1", 1) : unsetenv("WIN32_TEST_REFUSE");
#endif
}

TEST(LoadLibrary, RunsTheEntryPointWithItsInstance) {
    const HMODULE module = LoadLibraryA(kAccepting.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(AttachCalls(module), 1);
    EXPECT_EQ(win32::ModuleFunction<HINSTANCE (*)()>(module, "Instance")(), module);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LoadLibrary, ResourcesAreThereWhenTheEntryPointRuns) {
    const HMODULE module = LoadLibraryA(kAccepting.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(win32::ModuleFunction<int (*)()>(module, "LengthAtAttach")(), 14);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LoadLibrary, SecondLoadCountsAndDoesNotRunTheEntryPoint) {
    const HMODULE first = LoadLibraryA(kAccepting.c_str());
    ASSERT_NE(first, nullptr);
    const HMODULE second = LoadLibraryA(kAccepting.c_str());
    EXPECT_EQ(first, second);
    EXPECT_EQ(AttachCalls(first), 1);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(AttachCalls(first), 1) << "still loaded once";
    EXPECT_TRUE(FreeLibrary(first));
}

int detachCalls = 0;

TEST(LoadLibrary, LastFreeRunsTheEntryPointAndUnloads) {
    detachCalls = 0;
    const HMODULE module = LoadLibraryA(kAccepting.c_str());
    ASSERT_NE(module, nullptr);
    ASSERT_EQ(LoadLibraryA(kAccepting.c_str()), module);
    win32::ModuleFunction<void (*)(void (*)())>(module, "SetDetachSink")([] { ++detachCalls; });
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(detachCalls, 0);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(detachCalls, 1);
    EXPECT_FALSE(FreeLibrary(module));
}

TEST(LoadLibrary, RefusingEntryPointUnloadsTheModule) {
    SetRefusal(true);
    EXPECT_EQ(LoadLibraryA(kAccepting.c_str()), nullptr);
    SetRefusal(false);
    const HMODULE module = LoadLibraryA(kAccepting.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(AttachCalls(module), 1) << "the refused module's memory is gone";
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LoadLibrary, ModuleWithoutEntryPointLoads) {
    const HMODULE module = LoadLibraryA(kPlain.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(win32::ModuleFunction<int (*)()>(module, "Plain")(), 42);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LoadLibrary, BackslashesSeparateDirectories) {
    std::string path = kAccepting;
    for (char& c : path) {
        c = c == '/' ? '\\' : c;
    }
    const HMODULE module = LoadLibraryA(path.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(LoadLibrary, MissingFileGivesNull) {
    EXPECT_EQ(LoadLibraryA((kDir + "/nothing_here.dll").c_str()), nullptr);
}

TEST(GetProcAddress, MissingNameGivesNull) {
    const HMODULE module = LoadLibraryA(kPlain.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(GetProcAddress(module, "Missing"), nullptr);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(GetProcAddress, DoesNotSearchTheLibrariesThatTheModuleNeeds) {
    const HMODULE module = LoadLibraryA(kPlain.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_NE(GetProcAddress(module, "Plain"), nullptr);
    EXPECT_EQ(GetProcAddress(module, "Needed"), nullptr);
    EXPECT_TRUE(FreeLibrary(module));
}

#ifndef _WIN32

class Files : public testing::Test {
  protected:
    void CopyModule(const char* name) { fs::copy_file(kDir + "/win32_test_accepting.so", name); }
    static bool Loads(const char* path) {
        const HMODULE module = LoadLibraryA(path);
        return module && FreeLibrary(module);
    }

  private:
    support::WorkDirectory directory_;
};

TEST_F(Files, DllNameFindsTheSharedObject) {
    CopyModule("x.so");
    EXPECT_TRUE(Loads("./x.dll"));
    EXPECT_TRUE(Loads("./x.DLL"));
    EXPECT_TRUE(Loads("./x.so"));
    EXPECT_FALSE(Loads("./x.dle"));
    EXPECT_FALSE(Loads("./x"));
}

TEST_F(Files, TheNameItselfIsTriedFirst) {
    CopyModule("x.dll");
    std::ofstream("x.so") << "not a shared object";
    EXPECT_TRUE(Loads("./x.dll"));
    EXPECT_FALSE(Loads("./x.so"));
}

TEST_F(Files, DllOfAnotherSystemDoesNotHideTheSharedObject) {
    std::ofstream("x.dll") << "MZ";
    CopyModule("x.so");
    EXPECT_TRUE(Loads("./x.dll"));
}

TEST_F(Files, NameWithoutDirectoryIsTakenFromTheCurrentOne) {
    CopyModule("x.so");
    EXPECT_TRUE(Loads("x.dll"));
}

TEST_F(Files, AnyExtensionLoads) {
    CopyModule("x.dle");
    EXPECT_TRUE(Loads("./x.dle"));
}

TEST_F(Files, SaysWhyAModuleDidNotLoad) {
    EXPECT_FALSE(Loads("./x.dll"));
    EXPECT_EQ(win32::LastLoadError(), "the file does not exist");
    EXPECT_FALSE(Loads(nullptr));
    CopyModule("x.so");
    SetRefusal(true);
    EXPECT_FALSE(Loads("./x.dll"));
    SetRefusal(false);
    EXPECT_EQ(win32::LastLoadError(), "its entry point refused to load");
    EXPECT_TRUE(Loads("./x.dll"));
    EXPECT_EQ(win32::LastLoadError(), "");
    EXPECT_FALSE(Loads((kDir + "/win32_test_unresolved.dll").c_str()));
    EXPECT_NE(win32::LastLoadError().find("FunctionThatNobodyDefines"), std::string::npos);
}

TEST(Handles, ThatWereNotLoadedAreRefused) {
    int object = 0;
    const auto notAModule = reinterpret_cast<HMODULE>(&object);
    EXPECT_EQ(GetProcAddress(notAModule, "Plain"), nullptr);
    EXPECT_EQ(GetProcAddress(nullptr, "Plain"), nullptr);
    EXPECT_FALSE(FreeLibrary(notAModule));
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_TRUE(win32::ResourcesOf(notAModule).empty());
}

TEST(Handles, ModuleWithoutResourcesHasNone) {
    const HMODULE module = LoadLibraryA(kPlain.c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(win32::ResourcesOf(module).empty());
    EXPECT_TRUE(FreeLibrary(module));
}

#endif

}  // namespace
