#include "host/desktop/worker.h"

#include <utility>

#include "boundary/exceptions.h"
#include "host/core/host_error.h"

namespace torvell {

namespace {

// Returns the exception's own text; empty if it has none. Deletes the exception.
QString TakeText(platform::CException* raised) {
  const std::unique_ptr<platform::CException> error(raised);
  if (const auto* refusal = dynamic_cast<const rvx::CViscoException*>(raised)) {
    const std::string& text = refusal->GetRecord().message;
    if (!text.empty()) return QString::fromStdString(text);
    return QStringLiteral(
        "The instrument refused this and gave no reason. Nothing was changed. Try again, and look "
        "at the messages.");
  }
  char text[256];
  return raised->GetErrorMessage(text, sizeof(text), nullptr) != 0 ? QString::fromUtf8(text)
                                                                   : QString();
}

}  // namespace

QString DescribeRaised() {
  QString text;
  try {
    throw;
  } catch (platform::CException* raised) {
    text = TakeText(raised);
  } catch (const std::exception& error) {
    text = QString::fromUtf8(error.what());
  } catch (...) {
  }
  if (!text.isEmpty()) return text;
  return QStringLiteral(
      "This failed and gave no reason, probably by a fault in the program. Part of it may have "
      "been "
      "done: look at it and at the messages before you try again.");
}

Worker::Worker(GuiThread& gui, const std::string& name) : gui_(gui) {
  thread_ = platform::StartThread(name, [this] { Main(); });
}

Worker::~Worker() { Finish(); }

void Worker::Finish() {
  {
    platform::PlainGuard guard(lock_);
    ending_ = true;
  }
  work_.Set();
  thread_->Join();
}

void Worker::Do(QObject* owner, std::function<void()> job, std::function<void()> done,
                std::function<void(const QString&)> failed) {
  auto entry = std::make_shared<Job>();
  entry->owner = owner;
  entry->body = std::move(job);
  entry->done = std::move(done);
  entry->failed = std::move(failed);
  {
    platform::PlainGuard guard(lock_);
    jobs_.push_back(std::move(entry));
  }
  work_.Set();
}

void Worker::Report(std::shared_ptr<Job> job, const QString& failure) {
  gui_.Post([job = std::move(job), failure] {
    if (job->owner.isNull()) return;
    if (!failure.isEmpty()) {
      if (job->failed) job->failed(failure);
    } else if (job->done) {
      job->done();
    }
  });
}

void Worker::Main() {
  for (;;) {
    std::shared_ptr<Job> job;
    bool ending = false;
    {
      platform::PlainGuard guard(lock_);
      ending = ending_;
      if (!jobs_.empty()) {
        job = std::move(jobs_.front());
        jobs_.pop_front();
      }
    }
    if (!job) {
      if (ending) return;
      work_.Wait();
      continue;
    }
    QString failure;
    try {
      job->body();
    } catch (...) {
      failure = DescribeRaised();
    }
    Report(std::move(job), failure);
  }
}

}  // namespace torvell
