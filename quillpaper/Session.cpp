#include "quillpaper/Session.h"

#include <stdexcept>

#include "command/ClassFactory.h"

namespace quillpaper {

using namespace QuillFormatAPA;

Session::Session(DiagnosticsService::Options options)
    : service_(make<DiagnosticsService>(std::move(options))),
      registration_(std::make_unique<ServiceRegistration>(service_)),
      main2_(createObject("QuillFormatAPA.Main2")) {
  if (!main2_) throw std::runtime_error("the library does not offer QuillFormatAPA.Main2");
}

Session::~Session() {
  main2_ = ObjectRef();
  registration_.reset();
}

std::string Session::errorSummary() const {
  const auto& errors = service_->errors();
  if (errors.empty()) return {};
  const ReportedError& first = errors.front();
  std::string text = "the formatting library reported " + std::to_string(errors.size()) +
                     (errors.size() == 1 ? " error" : " errors") + ", the first in " + first.where + ": " +
                     first.description + " (" + std::to_string(first.number) + "); " +
                     (first.dumpFile.empty() ? first.dumpProblem : "details in " + first.dumpFile);
  return text;
}

int Session::finish(std::ostream& err) const {
  const std::string problem = service_->traceProblem();
  if (problem.empty()) return 0;
  err << "quillpaper: " << problem << "\n";
  return 1;
}

}  // namespace quillpaper
