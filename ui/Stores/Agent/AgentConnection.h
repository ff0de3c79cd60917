#pragma once

#include "Agent/GLibHandles.h"
#include "Agent/SignalSubscription.h"
#include "Model/Store.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Stores {

// The agent, over the session bus. The thread of the main context; nothing here waits. What is asked is
// answered by a call of the given function from the main loop, once, with the result or, without one, the
// reason why there is none; not at all when this object has gone.
class AgentConnection {
 public:
  template <class Result>
  using Answer = std::function<void(const std::optional<Result>& result, const std::string& problem)>;

  // What the agent tells unasked.
  struct Observer {
    std::function<void()> storesChanged;
    std::function<void(const std::string& storeURL)> locationChanged;
    std::function<void()> loggingChanged;
    std::function<void(const Finished&)> openingFinished;  // of an opening of this connection
    std::function<void()> agentCame;
    std::function<void()> agentWent;
  };

  AgentConnection(GDBusConnection* bus, Observer observer);
  ~AgentConnection();
  AgentConnection(const AgentConnection&) = delete;
  AgentConnection& operator=(const AgentConnection&) = delete;

  void AllStores(const Answer<std::vector<Store>>& answer);
  void StateOfSavedStores(const Answer<SavedState>& answer);
  void LocationForStore(const std::string& url, const Answer<Location>& answer);
  // Whether the agent did it; the answer may wait for a dialog.
  void DeleteStore(const std::string& id, const Answer<bool>& answer);
  void SetDefaultGateway(const std::string& id, const std::string& gateway, const Answer<bool>& answer);
  // The number of the opening, which Finished repeats.
  void OpenFile(const std::string& absolutePath, const Answer<std::uint64_t>& answer);

  // Tells everybody that the setting of the log was changed.
  void AnnounceLogging();

 private:
  struct Service {
    const char* name;
    const char* path;
    const char* interface;
  };
  static const Service kStores;
  static const Service kBeacons;
  static const Service kOpenings;
  static const Service kProperties;

  // Called with the reply's parameters, or with null and the reason.
  using ReplyHandler = std::function<void(GVariant* reply, const GError* error)>;

  void Call(const Service& service, const char* method, GVariant* arguments, const char* replyType,
            int timeOutMilliseconds, ReplyHandler handler);
  static void TakeReply(GObject* bus, GAsyncResult* result, gpointer handler);
  // As an agent tells it that was started before this program was brought up to date.
  void LocationForStoreInEnglish(const std::string& url, const Answer<Location>& answer);
  void NoteNotification(GVariant* parameters);
  void Subscribe();
  static void NoteOwner(GDBusConnection* bus, const char* name, const char* owner, gpointer self);
  static void NoteNoOwner(GDBusConnection* bus, const char* name, gpointer self);

  const Windows::ObjectPtr<GDBusConnection> bus_;
  const Observer observer_;
  const Windows::ObjectPtr<GCancellable> gone_{g_cancellable_new()};
  std::vector<SignalSubscription> subscriptions_;
  guint ownerWatch_ = 0;
};

}  // namespace Stores
