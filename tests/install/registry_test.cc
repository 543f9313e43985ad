// appregistry.dat: which lines count as a name, and what a disk can do to it.
#include "install/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "api/last_error.h"
#include "harness/files.h"

namespace {

using velnor::Registration;

const std::string kPath = harness::installed("appregistry.dat");

Registration registerName(const std::string& name, InstallContext* context = nullptr) {
    harness::makeInstallDirectory();
    return velnor::registerApplication(harness::kInstallPath.c_str(), name.c_str(), context);
}

TEST(Registry, FindsWholeLinesOnly) {
    const std::string longLine(1023, 'x');
    const struct {
        std::string content;
        std::string name;
        bool listed;
    } rows[] = {
        {"", "Velnor", false},
        {"Velnor\n", "Velnor", true},
        {"Velnor", "Velnor", true},
        {"velnor\n", "Velnor", false},
        {"Velnor2\n", "Velnor", false},
        {"A\nVelnor\nB\n", "Velnor", true},
        {"A\n\n\nVelnor\n\n", "Velnor", true},
        {"Velnor\r\n", "Velnor", false},
        {"A\n\nB\n", "", true},
        {longLine + "Velnor\n", "Velnor", false},
        {longLine + "Velnor", "Velnor", false},
        {longLine + longLine + "\nVelnor\n", "Velnor", true},
        {longLine + "\n", longLine, true},
        {longLine, longLine, true},
        {longLine + "y\n", longLine, false},
        {std::string("Vel\0nor\n", 8), "Velnor", false},
        {std::string("foo\0bar\nVelnor\n", 15), "Velnor", true},
        {std::string("\0\nVelnor\n", 9), "Velnor", true},
    };
    for (const auto& row : rows) {
        harness::makeInstallDirectory();
        harness::writeFile(kPath, row.content);
        EXPECT_EQ(registerName(row.name),
                  row.listed ? Registration::AlreadyRegistered : Registration::Registered)
            << row.content.substr(0, 20) << " " << row.name;
        EXPECT_EQ(harness::readFile(kPath), row.content + (row.listed ? "" : row.name + "\n"));
    }
}

TEST(RegistryOnFullDisk, KeepsWhatItHadAndSaysWhatIsMissing) {
    harness::makeInstallDirectory();
    harness::writeFile(kPath, "A\n");
    harness::fillDisk(harness::kInstallPath);
    harness::writeFile(kPath, std::string(4096, 'A'));  // the file's own block is full too
    EXPECT_EQ(registerName("Velnor"), Registration::Failed);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    EXPECT_EQ(harness::readFile(kPath), std::string(4096, 'A'));
}

TEST(Registry, FailuresNameThePath) {
    char detail[VN_ERROR_DETAIL_SIZE] = "";
    InstallContext context{};
    context.errorDetail = detail;
    harness::makeInstallDirectory();
    const std::string logged = "[eror] vn_install: Unable to ";

    std::filesystem::create_directory(kPath);
    EXPECT_EQ(registerName("Velnor", &context), Registration::Failed);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK_WRITE + 0U);
    EXPECT_EQ(detail, kPath);
    EXPECT_EQ(registerName("Velnor"), Registration::Failed);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    EXPECT_EQ(harness::logMessages().back(), logged + "open path: " + kPath);

    std::filesystem::remove(kPath);
    ASSERT_EQ(mkfifo(kPath.c_str(), 0600), 0);
    EXPECT_EQ(registerName("Velnor", &context), Registration::Failed);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_FILE_ACCESS + 0U);
    EXPECT_EQ(harness::logMessages().back(), logged + "seek to: " + kPath);
}

}  // namespace
