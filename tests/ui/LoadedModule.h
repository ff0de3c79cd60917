#pragma once

#include "libs/SRUIProtocol/SRUIProtocol.h"
#include "ui/TestBundle.h"

#include <filesystem>
#include <future>
#include <string>
#include <utility>

class LoadedModule;

// A dialog that was asked for on a thread of its own. Closed by termination when the test leaves it open.
class OpenDialog {
 public:
  OpenDialog(const LoadedModule& module, std::future<int> answer)
      : module_(module), answer_(std::move(answer)) {}
  ~OpenDialog();
  OpenDialog(const OpenDialog&) = delete;
  OpenDialog& operator=(const OpenDialog&) = delete;

  // -1 and a failed test when the answer does not come in time.
  [[nodiscard]] int Answer();
  [[nodiscard]] bool IsOpen() const;

 private:
  const LoadedModule& module_;
  std::future<int> answer_;
};

// The real UI module, loaded from a bundle of the test's own, with a termination descriptor of the test's
// own. What the test started ends with it.
class LoadedModule {
 public:
  LoadedModule();
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  [[nodiscard]] const TestBundle& Bundle() const { return bundle_; }
  // The entry points, asked for anew. Never null.
  [[nodiscard]] const SRUIProtocol& EntryPoints() const;

  // What a host offers that has neither a terminal nor a withdrawal to give.
  [[nodiscard]] SRUIHost Host() const;
  // The entry points for that host, whose context counts for the calling thread. Null when the module does
  // not work with it.
  [[nodiscard]] const SRUIProtocol* EntryPointsFor(const SRUIHost& host) const;

  [[nodiscard]] OpenDialog AddStore(std::string details) const;
  [[nodiscard]] OpenDialog ReplaceStore(std::string details) const;
  // Makes the termination descriptor readable.
  void RequestTermination() const;

 private:
  [[nodiscard]] OpenDialog Ask(int (*entryPoint)(const char*), std::string details) const;

  TestBundle bundle_;
  int terminationDescriptor_;
};
