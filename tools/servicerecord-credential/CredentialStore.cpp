#include "CredentialStore.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <libsecret/secret.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Credential {
namespace {

using State = CredentialStore::State;
using Place = CredentialStore::Place;

constexpr const char* kProtocol = "protocol";
constexpr const char* kHost = "host";
constexpr const char* kRealm = "realm";
constexpr const char* kUserName = "username";

using TablePtr = Lifetime::UniqueHandle<GHashTable, g_hash_table_unref>;
using ErrorPtr = Lifetime::UniqueHandle<GError, g_error_free>;
using ServicePtr = Lifetime::UniqueHandle<SecretService, g_object_unref>;
using CollectionPtr = Lifetime::UniqueHandle<SecretCollection, g_object_unref>;
using ItemPtr = Lifetime::UniqueHandle<SecretItem, g_object_unref>;
using ValuePtr = Lifetime::UniqueHandle<SecretValue, secret_value_unref>;

// Receives what a call of the library had to complain about.
class Complaint {
 public:
  GError** Out() { return &error_; }
  [[nodiscard]] bool IsEmpty() const { return error_ == nullptr; }
  std::string Take() {
    const ErrorPtr owned(std::exchange(error_, nullptr));
    return owned ? owned->message : std::string();
  }

 private:
  GError* error_ = nullptr;
};

const SecretSchema& Schema() {
  static const SecretSchema schema = [] {
    SecretSchema made{};
    made.name = "com.morvane.ServiceRecords.Credential";
    made.flags = SECRET_SCHEMA_NONE;
    std::size_t index = 0;
    for (const char* name : {kProtocol, kHost, kRealm, kUserName}) {
      made.attributes[index++] = {name, SECRET_SCHEMA_ATTRIBUTE_STRING};
    }
    return made;
  }();
  return schema;
}

TablePtr Attributes(const Place& place) {
  return TablePtr(secret_attributes_build(&Schema(), kProtocol, place.protocol.c_str(), kHost,
                                          place.host.c_str(), kRealm, place.realm.c_str(), nullptr));
}

TablePtr Attributes(const Place& place, const std::string& userName) {
  return TablePtr(secret_attributes_build(&Schema(), kProtocol, place.protocol.c_str(), kHost,
                                          place.host.c_str(), kRealm, place.realm.c_str(), kUserName,
                                          userName.c_str(), nullptr));
}

ServicePtr OpenService(Complaint& complaint) {
  return ServicePtr(secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, complaint.Out()));
}

// Where new items go, or why they cannot.
struct DefaultCollection {
  CollectionPtr collection;
  State state = State::Available;
  std::string reason;
};

DefaultCollection OpenDefaultCollection(SecretService* service) {
  Complaint complaint;
  CollectionPtr collection(secret_collection_for_alias_sync(
      service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, nullptr, complaint.Out()));
  if (!complaint.IsEmpty()) return {nullptr, State::Failed, complaint.Take()};
  if (!collection) return {nullptr, State::Missing, "it has no default collection"};
  if (secret_collection_get_locked(collection.get()) != FALSE) return {nullptr, State::Locked, {}};
  return {std::move(collection), State::Available, {}};
}

std::vector<ItemPtr> Search(SecretService* service, const TablePtr& attributes, Complaint& complaint) {
  constexpr auto kFlags = static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
  GList* const found =
      secret_service_search_sync(service, &Schema(), attributes.get(), kFlags, nullptr, complaint.Out());
  std::vector<ItemPtr> items;
  for (GList* link = found; link != nullptr; link = link->next) {
    items.emplace_back(static_cast<SecretItem*>(link->data));
  }
  g_list_free(found);
  return items;
}

std::string UserNameOf(SecretItem* item) {
  const TablePtr attributes(secret_item_get_attributes(item));
  const void* const name = attributes ? g_hash_table_lookup(attributes.get(), kUserName) : nullptr;
  return name != nullptr ? static_cast<const char*>(name) : std::string();
}

CredentialWire::Secret PasswordOf(SecretItem* item) {
  const ValuePtr value(secret_item_get_secret(item));
  if (!value) return {};
  gsize length = 0;
  const char* const bytes = secret_value_get(value.get(), &length);
  return CredentialWire::Secret(std::string_view(bytes, length));
}

bool IsLocked(const ItemPtr& item) {
  return secret_item_get_locked(item.get()) != FALSE;
}

// One credential for each place: what is kept for other users goes.
void DeleteOthers(SecretService* service, const Place& place, const std::string& userName) {
  Complaint complaint;
  for (const ItemPtr& item : Search(service, Attributes(place), complaint)) {
    if (IsLocked(item) || UserNameOf(item.get()) == userName) continue;
    Complaint ignored;
    secret_item_delete_sync(item.get(), nullptr, ignored.Out());
    ignored.Take();
  }
  complaint.Take();
}

}  // namespace

std::optional<CredentialStore::Login> CredentialStore::Find(const Place& place) {
  Complaint complaint;
  const ServicePtr service = OpenService(complaint);
  if (!service) {
    Note(State::Missing, complaint.Take());
    return std::nullopt;
  }
  const std::vector<ItemPtr> items = Search(service.get(), Attributes(place), complaint);
  if (!complaint.IsEmpty()) {
    Note(State::Failed, complaint.Take());
    return std::nullopt;
  }
  const DefaultCollection target = OpenDefaultCollection(service.get());
  Note(target.state, target.reason);
  for (const ItemPtr& item : items) {
    std::string userName = UserNameOf(item.get());
    if (!IsLocked(item) && !userName.empty()) return Login{std::move(userName), PasswordOf(item.get())};
  }
  if (std::any_of(items.begin(), items.end(), IsLocked)) Note(State::Locked, {});
  return std::nullopt;
}

bool CredentialStore::Store(const Place& place, const Login& login) {
  Complaint complaint;
  const ServicePtr service = OpenService(complaint);
  if (!service) return Note(State::Missing, complaint.Take());
  const DefaultCollection target = OpenDefaultCollection(service.get());
  if (!target.collection) return Note(target.state, target.reason);

  const std::string_view password = login.password.View();
  const ValuePtr value(secret_value_new(password.data(), static_cast<gssize>(password.size()), "text/plain"));
  const std::string label = login.userName + " at " + place.protocol + "://" + place.host;
  const ItemPtr item(secret_item_create_sync(
      target.collection.get(), &Schema(), Attributes(place, login.userName).get(), label.c_str(), value.get(),
      SECRET_ITEM_CREATE_REPLACE, nullptr, complaint.Out()));
  if (!item) return Note(State::Failed, complaint.Take());
  DeleteOthers(service.get(), place, login.userName);
  return Note(State::Available, {});
}

bool CredentialStore::Erase(const Place& place, const std::string& userName) {
  Complaint complaint;
  const ServicePtr service = OpenService(complaint);
  if (!service) return Note(State::Missing, complaint.Take());
  const std::vector<ItemPtr> items = Search(service.get(), Attributes(place, userName), complaint);
  if (!complaint.IsEmpty()) return Note(State::Failed, complaint.Take());
  for (const ItemPtr& item : items) {
    if (IsLocked(item)) return Note(State::Locked, {});
    if (secret_item_delete_sync(item.get(), nullptr, complaint.Out()) == FALSE) {
      return Note(State::Failed, complaint.Take());
    }
  }
  return Note(State::Available, {});
}

bool CredentialStore::Note(State state, std::string reason) {
  state_ = state;
  reason_ = std::move(reason);
  return state == State::Available;
}

}  // namespace Credential
