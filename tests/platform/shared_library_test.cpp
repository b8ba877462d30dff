// Loading shared libraries: library directory first for bare names, system
// search otherwise, loader error texts, symbols.
#include "vq/platform/shared_library.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using vq::platform::SharedLibrary;

constexpr const char* kPickName = "libvqpicktest.so";
using PickFunction = int (*)();

int PickedValue(const SharedLibrary& library) {
  std::string error;
  auto pick = library.FindFunction<PickFunction>("vq_pick_value", &error);
  EXPECT_NE(pick, nullptr) << error;
  return pick != nullptr ? pick() : -1;
}

class SharedLibraryTest : public ::testing::Test {
 protected:
  void TearDown() override { vq::platform::SetLibraryDirectory(""); }
};

TEST_F(SharedLibraryTest, LibraryDirectoryIsSearchedFirstForBareNames) {
  struct Case {
    const char* label;
    std::string directory;
    std::string name;
    int expected;
  };
  const std::string a = VQ_PICK_DIR_A, b = VQ_PICK_DIR_B;
  const Case cases[] = {
      {"directory A", a, kPickName, 1},
      {"directory A with trailing slash", a + "/", kPickName, 1},
      {"directory B", b, kPickName, 2},
      {"no directory: system search", "", kPickName, 2},
      {"directory without the file: system search", a + "/missing", kPickName, 2},
      {"path with a slash ignores the directory", a, b + "/" + kPickName, 2},
      {"relative-looking path ignores the directory", b, a + "/./" + kPickName, 1},
  };
  for (const Case& c : cases) {
    vq::platform::SetLibraryDirectory(c.directory);
    EXPECT_EQ(vq::platform::GetLibraryDirectory(), c.directory) << c.label;
    std::string error;
    SharedLibrary library = SharedLibrary::Open(c.name, &error);
    ASSERT_TRUE(library.IsOpen()) << c.label << ": " << error;
    EXPECT_EQ(PickedValue(library), c.expected) << c.label << " (" << library.Path() << ")";
  }
}

TEST_F(SharedLibraryTest, BothCopiesCanBeOpenAtOnce) {
  vq::platform::SetLibraryDirectory(VQ_PICK_DIR_A);
  SharedLibrary fromDirectory = SharedLibrary::Open(kPickName);
  vq::platform::SetLibraryDirectory("");
  SharedLibrary fromSystem = SharedLibrary::Open(kPickName);
  ASSERT_TRUE(fromDirectory && fromSystem);
  EXPECT_EQ(PickedValue(fromDirectory), 1);
  EXPECT_EQ(PickedValue(fromSystem), 2);
}

TEST_F(SharedLibraryTest, FailuresGiveTheLoaderText) {
  std::string error;
  SharedLibrary missing = SharedLibrary::Open("/nonexistent/libnothing.so", &error);
  EXPECT_FALSE(missing.IsOpen());
  EXPECT_NE(error.find("libnothing.so"), std::string::npos) << error;

  error.clear();
  EXPECT_FALSE(SharedLibrary::Open("libvq-no-such-library.so", &error));
  EXPECT_NE(error.find("libvq-no-such-library.so"), std::string::npos) << error;

  error.clear();
  EXPECT_FALSE(SharedLibrary::Open("", &error));
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(SharedLibrary::Open(std::string("lib\0x.so", 8), &error));

  error.clear();
  EXPECT_FALSE(SharedLibrary::Open(VQ_SOURCE_DIR "/CMakeLists.txt", &error));  // not a library
  EXPECT_FALSE(error.empty());
  EXPECT_FALSE(SharedLibrary::Open(VQ_PICK_DIR_A, nullptr));  // a folder, no error wanted
}

TEST_F(SharedLibraryTest, SymbolLookUp) {
  SharedLibrary library = SharedLibrary::Open(std::string(VQ_PICK_DIR_A) + "/" + kPickName);
  ASSERT_TRUE(library.IsOpen());
  std::string error;
  EXPECT_NE(library.FindSymbol("vq_pick_value", &error), nullptr);
  EXPECT_EQ(library.FindSymbol("vq_no_such_symbol", &error), nullptr);
  EXPECT_NE(error.find("vq_no_such_symbol"), std::string::npos) << error;
  error.clear();
  EXPECT_EQ(library.FindSymbol(nullptr, &error), nullptr);
  EXPECT_FALSE(error.empty());
  EXPECT_EQ(library.FindSymbol("", nullptr), nullptr);

  library.Close();
  EXPECT_FALSE(library.IsOpen());
  error.clear();
  EXPECT_EQ(library.FindSymbol("vq_pick_value", &error), nullptr);
  EXPECT_FALSE(error.empty());
  const SharedLibrary never;
  EXPECT_EQ(never.FindSymbol("vq_pick_value"), nullptr);
}

TEST_F(SharedLibraryTest, MovingTransfersOwnership) {
  SharedLibrary first = SharedLibrary::Open(std::string(VQ_PICK_DIR_B) + "/" + kPickName);
  ASSERT_TRUE(first.IsOpen());
  SharedLibrary second(std::move(first));
  EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(PickedValue(second), 2);
  SharedLibrary third = SharedLibrary::Open(std::string(VQ_PICK_DIR_A) + "/" + kPickName);
  third = std::move(second);
  EXPECT_EQ(PickedValue(third), 2);
}

TEST_F(SharedLibraryTest, ModuleAndExecutablePaths) {
  const std::string path = std::string(VQ_PICK_DIR_A) + "/" + kPickName;
  SharedLibrary library = SharedLibrary::Open(path);
  ASSERT_TRUE(library.IsOpen());
  const std::string modulePath = vq::platform::GetModulePath(library.FindSymbol("vq_pick_value"));
  EXPECT_EQ(vq::platform::DirectoryOf(modulePath), vq::platform::DirectoryOf(path));
  const std::string executable = vq::platform::GetExecutablePath();
  EXPECT_NE(executable.find("platform_library_test"), std::string::npos) << executable;
  EXPECT_EQ(vq::platform::GetModulePath(reinterpret_cast<const void*>(&PickedValue)), executable);
  EXPECT_EQ(vq::platform::GetModulePath(nullptr), "");
}

TEST(DirectoryOfTest, SplitsThePath) {
  struct Case {
    const char* path;
    const char* directory;
  } cases[] = {{"/a/b/c.so", "/a/b"}, {"c.so", "."}, {"/c.so", "/"}, {"", "."}, {"a/", "a"}};
  for (const Case& c : cases) EXPECT_EQ(vq::platform::DirectoryOf(c.path), c.directory) << c.path;
}

}  // namespace
