#include "quillpaper/references/ReferenceJobs.h"

#include <algorithm>
#include <locale>
#include <optional>
#include <stdexcept>

#include "command/ClassFactory.h"

namespace quillpaper {

ReferenceJobs::ReferenceJobs(Session& session, ReferencePipeline::Options options, int threads)
    : threadCount_(static_cast<size_t>(std::max(threads, 1))) {
  // The standard library's character classes fill a cache of narrowed
  // characters as they are first asked (regular expressions ask, as they are
  // compiled): filled here, the threads only read it.
  const auto& characters = std::use_facet<std::ctype<char>>(std::locale());
  for (int c = 0; c < 256; ++c) characters.narrow(static_cast<char>(c), '\0');
  try {
    for (size_t k = 0; k < threadCount_; ++k)
      threads_.emplace_back([this, &session, options] { work(session, options); });
  } catch (...) {
    stop();  // a thread the system would not start: the others end before the error goes on
    throw;
  }
}

ReferenceJobs::~ReferenceJobs() { stop(); }

void ReferenceJobs::stop() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& t : threads_) t.join();
  threads_.clear();
}

std::vector<FormattedReference> ReferenceJobs::format(const std::vector<ReferenceLine>& batch) {
  std::vector<FormattedReference> results(batch.size());
  {
    std::lock_guard lock(mutex_);
    batch_ = &batch;
    results_ = &results;
    next_ = 0;
    finished_ = 0;
    ++round_;
  }
  wake_.notify_all();
  std::unique_lock lock(mutex_);
  done_.wait(lock, [&] { return finished_ == threadCount_; });
  batch_ = nullptr;
  results_ = nullptr;
  if (failure_) std::rethrow_exception(failure_);
  return results;
}

// One thread: its pipeline is made, used and let go on it, as the library
// keeps its objects per thread.
void ReferenceJobs::work(Session& session, ReferencePipeline::Options options) {
  std::optional<ReferencePipeline> pipeline;
  const auto failed = [this] {
    std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
  };
  try {
    QuillFormatAPA::ObjectRef main2 = QuillFormatAPA::createObject("QuillFormatAPA.Main2");
    if (!main2) throw std::runtime_error("the library does not offer QuillFormatAPA.Main2");
    pipeline.emplace(session, options, std::move(main2));
  } catch (...) {
    failed();
  }
  size_t seen = 0;
  for (;;) {
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [&] { return stopping_ || round_ != seen; });
      if (stopping_) return;
      seen = round_;
    }
    // Entries are taken one at a time: a slow one (read by the learned
    // reader) does not hold up the others.
    if (pipeline) {
      for (size_t i = next_++; i < batch_->size(); i = next_++) {
        try {
          (*results_)[i] = pipeline->format((*batch_)[i].text, (*batch_)[i].number);
        } catch (...) {
          failed();
        }
      }
    }
    std::lock_guard lock(mutex_);
    if (++finished_ == threadCount_) done_.notify_one();
  }
}

}  // namespace quillpaper
