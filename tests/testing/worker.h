// SPDX-License-Identifier: Apache-2.0
// A thread for tests, made through the library's own thread service.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

#include "marlo110k/platform/event.h"
#include "platform/sys/thread.h"

namespace testing_support {

/// Runs a body on a thread of its own; the destructor waits for its end.
class Worker {
 public:
  explicit Worker(std::function<void()> body, int32_t priority = plat::kPriorityDefault)
      : body_(std::make_unique<std::function<void()>>(std::move(body))),
        thread_(plat::StartThread(Run, body_.get(), priority, "test-worker")) {
    EXPECT_NE(thread_, nullptr);
  }
  Worker(Worker&& other) noexcept : body_(std::move(other.body_)), thread_(std::exchange(other.thread_, nullptr)) {}
  ~Worker() { Join(); }

  void Join() {
    if (thread_ == nullptr) return;
    plat::JoinThread(thread_, plat::kInfinite, nullptr);
    plat::CloseThread(std::exchange(thread_, nullptr));
  }
  plat::Thread* Handle() const { return thread_; }

 private:
  static uint32_t Run(void* body) {
    (*static_cast<std::function<void()>*>(body))();
    return 0;
  }
  std::unique_ptr<std::function<void()>> body_;
  plat::Thread* thread_;
};

}  // namespace testing_support
