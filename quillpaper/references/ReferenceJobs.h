#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "quillpaper/references/ReferenceInput.h"
#include "quillpaper/references/ReferencePipeline.h"

namespace quillpaper {

// Formats a list's entries on several threads, each with a pipeline (and a
// command object) of its own, and gives them back in the order they came:
// what a list comes out as does not depend on how many threads made it.
class ReferenceJobs {
 public:
  ReferenceJobs(Session& session, ReferencePipeline::Options options, int threads);
  ~ReferenceJobs();
  ReferenceJobs(const ReferenceJobs&) = delete;
  ReferenceJobs& operator=(const ReferenceJobs&) = delete;

  // The entries of `batch`, formatted, in its order. Raises what a pipeline raised.
  std::vector<FormattedReference> format(const std::vector<ReferenceLine>& batch);

 private:
  void work(Session& session, ReferencePipeline::Options options);
  void stop();

  const size_t threadCount_;
  std::mutex mutex_;  // guards what follows, to the threads
  std::condition_variable wake_, done_;
  const std::vector<ReferenceLine>* batch_ = nullptr;
  std::vector<FormattedReference>* results_ = nullptr;
  size_t round_ = 0;     // how many batches were handed out
  size_t finished_ = 0;  // how many threads are done with this one
  bool stopping_ = false;
  std::exception_ptr failure_;
  std::atomic<size_t> next_{0};  // the next entry of the batch to take
  std::vector<std::thread> threads_;
};

}  // namespace quillpaper
