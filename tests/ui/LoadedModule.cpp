#include "ui/LoadedModule.h"

#include "Dialogs/UIBundleLoader.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <utility>

LoadedModule::LoadedModule() : terminationDescriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_UI_MODULE);
}

// The descriptor stays open: a module may watch it until the process ends.
LoadedModule::~LoadedModule() {
  RequestTermination();
}

const SRUIProtocol& LoadedModule::EntryPoints() const {
  const SRUIProtocol* entryPoints = EntryPointsFor(Host());
  if (entryPoints == nullptr) throw std::runtime_error("the module does not load");
  return *entryPoints;
}

SRUIHost LoadedModule::Host() const {
  return {SRUI_PROTOCOL_VERSION, terminationDescriptor_, -1, -1, nullptr};
}

const SRUIProtocol* LoadedModule::EntryPointsFor(const SRUIHost& host) const {
  return Agent::UIBundleLoader(bundle_.PlugInsFolder(), host).PrincipalClass("test");
}

OpenDialog LoadedModule::AddStore(std::string details) const {
  return Ask(EntryPoints().addStore, std::move(details));
}

OpenDialog LoadedModule::ReplaceStore(std::string details) const {
  return Ask(EntryPoints().replaceStore, std::move(details));
}

OpenDialog LoadedModule::Ask(int (*entryPoint)(const char*), std::string details) const {
  return {*this, std::async(std::launch::async,
                            [entryPoint, text = std::move(details)] { return entryPoint(text.c_str()); })};
}

void LoadedModule::RequestTermination() const {
  ::eventfd_write(terminationDescriptor_, 1);
}

OpenDialog::~OpenDialog() {
  if (answer_.valid()) module_.RequestTermination();
}

int OpenDialog::Answer() {
  if (answer_.wait_for(std::chrono::seconds(30)) == std::future_status::ready) return answer_.get();
  ADD_FAILURE() << "the dialog did not come to an end";
  return -1;
}

bool OpenDialog::IsOpen() const {
  return answer_.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}
