#pragma once

#include "SRLib/Repository/ConfigurationTree.h"

// The configuration tree of one scope, kept in one property-list file; what there is to tell of its failures
// is that of the scope's file in this process.
class CMacConfiguration : public Config::ConfigurationTree {
 public:
  explicit CMacConfiguration(bool perUser);

  bool SetBinary(const std::wstring& key, const std::uint8_t* bytes, std::uint32_t size) const override;
};
