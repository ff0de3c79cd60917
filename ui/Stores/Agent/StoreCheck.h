#pragma once

#include "Agent/GLibHandles.h"
#include "libs/Wording/Message.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Stores {

// What one check of a store found out. All text is UTF-8 and may hold any character.
struct CheckFinding {
  enum class Result { Ok, Note, Problem };

  Result result = Result::Note;
  std::string check;      // what was looked at, "server"
  Wording::Message text;  // what was seen there, a sentence
  Wording::Message next;  // what to do about it, a sentence; may be empty
};

// How a check ended: what srctl reports by its exit status.
enum class CheckEnd { Done, NotInList, Unreachable, Failed };

// A line of what srctl prints; one that cannot be read is nothing.
[[nodiscard]] std::optional<CheckFinding> FindingFromLine(const std::string& line);

// One run of the checks over a store and its servers, in a process of their own, that ends with this object.
// The thread of the main context; nothing here waits.
class StoreCheck {
 public:
  struct Observer {
    std::function<void(const CheckFinding&)> found;
    // After the last finding; may destroy this object.
    std::function<void(CheckEnd end)> ended;
  };

  // `program`: the path of srctl. Null when it cannot be run.
  static std::unique_ptr<StoreCheck> Start(const std::string& program, const std::string& storeID,
                                           Observer observer);
  ~StoreCheck();
  StoreCheck(const StoreCheck&) = delete;
  StoreCheck& operator=(const StoreCheck&) = delete;

 private:
  StoreCheck(Windows::ObjectPtr<GSubprocess> process, Observer observer);

  void ReadLine();
  static void TakeLine(GObject* stream, GAsyncResult* result, gpointer self);
  static void TakeEnd(GObject* process, GAsyncResult* result, gpointer self);

  const Observer observer_;
  const Windows::ObjectPtr<GCancellable> gone_{g_cancellable_new()};
  const Windows::ObjectPtr<GSubprocess> process_;
  const Windows::ObjectPtr<GDataInputStream> output_;
  bool foundSomething_ = false;
};

}  // namespace Stores
