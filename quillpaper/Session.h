#pragma once

#include <memory>
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

 private:
  QuillFormatAPA::Ref<DiagnosticsService> service_;
  std::unique_ptr<ServiceRegistration> registration_;
  QuillFormatAPA::ObjectRef main2_;
};

}  // namespace quillpaper
