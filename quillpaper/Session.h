#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "host/Object.h"
#include "quillpaper/DiagnosticsService.h"

namespace quillpaper {

// One run of the library: the diagnostics service registered where the
// library looks for it, and the command object. On destruction the command
// object goes first, then the registration.
class Session {
 public:
  explicit Session(DiagnosticsService::Options options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const QuillFormatAPA::ObjectRef& main2() const { return main2_; }
  DiagnosticsService& service() const { return *service_; }
  // A sentence for the user when the library reported errors, else empty.
  std::string errorSummary() const;
  // A command's last word: 0, or 1 after saying on `err` that the trace asked
  // for could not be written.
  int finish(std::ostream& err) const;

 private:
  QuillFormatAPA::Ref<DiagnosticsService> service_;
  std::unique_ptr<ServiceRegistration> registration_;
  QuillFormatAPA::ObjectRef main2_;
};

}  // namespace quillpaper
