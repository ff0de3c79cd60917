#pragma once

#include "Shared/Owners.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Stores {

// In place of the agent: notes what it is asked, and tells what the test says.
class StandInAgent {
 public:
  // `source`: the root of the project's files. Owns the agent's names on the bus from now on.
  StandInAgent(const std::string& busAddress, const std::string& source);
  ~StandInAgent();
  StandInAgent(const StandInAgent&) = delete;
  StandInAgent& operator=(const StandInAgent&) = delete;

  void GiveUpTheNames();
  void TakeTheNames();

  // The paths of the openings so far; the first has the number 1.
  [[nodiscard]] const std::vector<std::string>& Opened() const { return opened_; }
  // The display on which the last one is asked about; empty where it was not said.
  [[nodiscard]] const std::string& Display() const { return display_; }
  // Tells whoever opened a file last. `stores`: as GLib prints an aa{sv}.
  void Finish(std::uint64_t opening, const std::string& outcome, const std::string& stores);

  // How often the list was asked for. Each question waits for its answer.
  [[nodiscard]] std::size_t QuestionsForStores() const { return questions_.size(); }
  void TellStores(std::size_t question, const std::string& stores);
  void AnnounceChange();

  // Then it says only in English why a location is what it is.
  bool isOfBeforeAnUpdate = false;
  // How often a location was asked for, which is always the store's network.
  [[nodiscard]] int QuestionsForLocation() const { return locations_; }

 private:
  static void Take(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                   const char* method, GVariant* parameters, GDBusMethodInvocation* call, gpointer self);
  static GVariant* State(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                         const char* property, GError** error, gpointer self);
  void Offer(const std::string& source, const char* path, const char* interface);
  void Emit(const char* receiver, const char* signal, GVariant* parameters);
  void TakeOpening(const char* sender, GVariant* parameters, GDBusMethodInvocation* call);

  Windows::ObjectPtr<GDBusConnection> bus_;
  std::vector<std::string> opened_;
  std::string caller_;
  std::string display_;
  std::vector<GDBusMethodInvocation*> questions_;  // an answer takes each
  int locations_ = 0;
};

}  // namespace Stores
