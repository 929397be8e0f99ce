// What every backend must answer alike. A backend joins by one file that instantiates the suite:
//
//   INSTANTIATE_TEST_SUITE_P(Memory, BackendContract, testing::Values(ContractBackend{...}));
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "registry/platform.h"

namespace scrubwell::test {

/// A switched-off 64-bit Windows 10 of the user below. Further keys and files that the backend
/// needs may be there too.
struct ContractText {
  std::string registry;  ///< .reg form without its first line, physical paths (see HivePlaceOf)
  std::string files;     ///< one a line: "C:\a.txt | text=x", "C:\folder\" (see MemoryFiles::Add)
  std::u16string userSid = u"S-1-5-21-1-2-3-1001";
  std::u16string guarded;  ///< a key of these that nobody may delete
};

class ContractWorld {
 public:
  virtual ~ContractWorld() = default;
  virtual IRegistry& Registry() = 0;
  virtual IFiles& Files() = 0;
};

/// What not every backend's world can have.
enum Trait : unsigned {
  kHivesUnknown = 1U,  ///< a hive that was not found may be there when the system runs
  kStoredNames = 2U,   ///< a value is given with its name as it is stored, not as it was asked for
  kNoSysnative = 4U,   ///< "Sysnative" is there for redirected programs alone
};

struct ContractBackend {
  const char* name = "";
  bool writes = false;  ///< false: the rows that change something are left out
  std::function<std::unique_ptr<ContractWorld>(const ContractText&)> make;
  unsigned lacks = 0;  ///< rows that need one of these traits are left out
};

inline void PrintTo(const ContractBackend& backend, std::ostream* out) {
  *out << backend.name;
}

class BackendContract : public testing::TestWithParam<ContractBackend> {};

}  // namespace scrubwell::test
