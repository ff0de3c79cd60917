#include "ui/TestBundle.h"

#include <fstream>
#include <iterator>

namespace {

constexpr const char* kDialogProgram = "servicerecord-dialog";

void Write(const std::filesystem::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

}  // namespace

TestBundle::TestBundle() {
  std::filesystem::create_directory(Path());
}

void TestBundle::Describe(const std::string& protocol) const {
  Write(File("Info.plist"),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
        "<key>CFBundleExecutable</key><string>Module.so</string>"
        "<key>SRConformsToProtocol</key><string>" +
            protocol + "</string></dict></plist>\n");
}

void TestBundle::AddModule(const std::filesystem::path& file) const {
  std::filesystem::copy_file(file, Module());
}

void TestBundle::AddDialogProgram(const std::filesystem::path& file) const {
  std::filesystem::copy_file(file, File(kDialogProgram));
}

void TestBundle::ScriptDialogProgram(const std::string& body) const {
  Script(kDialogProgram, body);
}

void TestBundle::ScriptWindowProgram(const std::string& body) const {
  Script("servicerecord-dialog-window", body);
}

void TestBundle::Script(const char* program, const std::string& body) const {
  Write(File(program),
        "#!/bin/bash\nexport LC_ALL=C\ncd \"${0%/*}\" || exit 1\n"
        "readRequest() { read -r word version dialog size; head -c \"$size\" >details; }\n" +
            body + "\n");
  std::filesystem::permissions(File(program), std::filesystem::perms::owner_all);
}

std::string ContentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}
