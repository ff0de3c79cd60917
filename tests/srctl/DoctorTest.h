#pragma once

#include "srctl/SrctlTest.h"

#include <string>

// A user for whom something may be wrong.
class DoctorTest : public SrctlTest {
 protected:
  DoctorTest();

  // A store at the trusted server, which serves its discovery document.
  [[nodiscard]] TestSupport::StoreText WorkingStore(const std::string& id, const std::string& name) const;
  // The same at another server, whose address is scheme://host:port.
  [[nodiscard]] TestSupport::StoreText StoreAt(const std::string& address) const;
  // https://localhost with a port on which nobody listens.
  [[nodiscard]] static std::string NobodysAddress();
  static void WriteDocument(const TestSupport::WebServer& server, const std::string& id,
                            const std::string& content);

  // The line about a check; the check of the store s1 named One when it is one of a store. Empty when there
  // is none or more than one.
  [[nodiscard]] static std::string Line(const SrctlRun& run, const std::string& check);
  [[nodiscard]] static std::string StoreLine(const SrctlRun& run, const std::string& check) {
    return Line(run, "store \"One\" (s1), " + check);
  }

  // A line that says what is wrong and what to do.
  static void ExpectProblem(const std::string& line, const std::string& what, const std::string& next);
};
