#pragma once

#include <string>

namespace ServiceRecords {

// A change of one store of the list.
struct ListChange {
  enum class Kind {
    Added,
    Replaced,   // the user wanted another record of it
    Confirmed,  // by its discovery service, whether its record is another or not
    Deleted,
    DefaultGateway
  };

  Kind kind;
  // As the list has them now; of a deleted store, as it had them.
  std::wstring id;
  std::wstring name;
  std::wstring url;
  std::wstring defaultGateway = {};  // of that kind alone
};

}  // namespace ServiceRecords
