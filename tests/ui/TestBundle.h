#pragma once

#include "support/TemporaryFolder.h"

#include <filesystem>
#include <string>

// A folder of plug-ins with one "ServiceRecordUI.bundle", made and removed by the test.
class TestBundle {
 public:
  TestBundle();

  [[nodiscard]] std::filesystem::path PlugInsFolder() const { return folder_.Path(); }
  [[nodiscard]] std::filesystem::path Path() const { return folder_.Path() / "ServiceRecordUI.bundle"; }
  [[nodiscard]] std::filesystem::path Module() const { return Path() / "Module.so"; }
  [[nodiscard]] std::filesystem::path File(const std::string& name) const { return Path() / name; }

  // An Info.plist that names Module.so and the protocol.
  void Describe(const std::string& protocol) const;
  void AddModule(const std::filesystem::path& file) const;
  void AddDialogProgram(const std::filesystem::path& file) const;
  // A dialog program in bash that runs in the bundle's folder. "readRequest" takes the request apart: the
  // words of the header are in $word, $version, $dialog and $size, the dictionary in the file "details".
  void ScriptDialogProgram(const std::string& body) const;
  // The same in the place of the one with a window.
  void ScriptWindowProgram(const std::string& body) const;

 private:
  void Script(const char* program, const std::string& body) const;

  TestSupport::TemporaryFolder folder_;
};

[[nodiscard]] std::string ContentOf(const std::filesystem::path& file);
