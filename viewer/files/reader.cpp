// Threads that read.
#include "viewer/files/reader.h"

#include "viewer/view/text.h"

#include <talxrend.hpp>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <thread>

namespace talview {
namespace {

using Clock = std::chrono::steady_clock;

// Objects of COM that are made on this thread may be used by every thread of the same kind.
class FreeApartment {
public:
    FreeApartment() { talxrend::check(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "cannot start COM"); }
    ~FreeApartment() { CoUninitialize(); }
    FreeApartment(const FreeApartment&) = delete;
    FreeApartment& operator=(const FreeApartment&) = delete;
};

using Outcome = std::variant<FilePicture, std::string>;

// Whatever is thrown, but for Cancelled, is said. noMemory: what to say where there is none, made while there
// was some.
Outcome readOrSay(const FileRequest& request, Progress& progress, std::string& noMemory) {
    try {
        try {
            const FreeApartment apartment;
            return readPicture(request, progress);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& failure) {
            return failure.what();
        } catch (...) {
            return "cannot read the picture";
        }
    } catch (const std::bad_alloc&) {
        return std::move(noMemory);
    }
}

} // namespace

// What the threads have in common; lives as long as one of them does.
struct Reader::Shared {
    explicit Shared(std::function<void()> call) : wake(std::move(call)) {}

    std::mutex mutex; // of everything here
    std::condition_variable ended;
    int running = 0;
    const std::function<void()> wake;
    std::shared_ptr<Job> job; // the one whose result is wanted
    std::optional<Result> result;

    void drop();
};

struct Reader::Job {
    Job(FileRequest asked, Shared& readers)
        : request(std::move(asked)), noMemory("not enough memory for " + utf8(request.path)),
          progress([this] { progressed(); }), shared(readers) {}

    FileRequest request;
    std::string noMemory;
    Progress progress;
    Shared& shared;
    Clock::time_point told{}; // of the job's thread

    void progressed() {
        const auto now = Clock::now();
        if (now - told >= std::chrono::milliseconds(50)) {
            told = now;
            const std::lock_guard lock(shared.mutex);
            if (shared.job.get() == this) {
                shared.wake();
            }
        }
    }

    void run() {
        try {
            Outcome outcome = readOrSay(request, progress, noMemory);
            Result read{std::move(request), std::move(outcome)};
            const std::lock_guard lock(shared.mutex);
            if (shared.job.get() == this) {
                shared.result = std::move(read);
                shared.job.reset();
                shared.wake();
            }
        } catch (const Cancelled&) {
        }
    }
};

void Reader::Shared::drop() {
    if (job) {
        job->progress.cancel();
    }
    job.reset();
    result.reset();
}

Reader::Reader(std::function<void()> wake) : shared_(std::make_shared<Shared>(std::move(wake))) {}

Reader::~Reader() {
    std::unique_lock lock(shared_->mutex);
    shared_->drop();
    shared_->ended.wait_for(lock, std::chrono::milliseconds(500), [this] { return shared_->running == 0; });
}

void Reader::start(FileRequest request) {
    const auto job = std::make_shared<Job>(std::move(request), *shared_);
    const std::lock_guard lock(shared_->mutex);
    shared_->drop();
    std::thread([shared = shared_, job] {
        job->run();
        const std::lock_guard ending(shared->mutex);
        --shared->running;
        shared->ended.notify_all();
    }).detach();
    ++shared_->running;
    shared_->job = job;
}

void Reader::cancel() {
    const std::lock_guard lock(shared_->mutex);
    shared_->drop();
}

bool Reader::busy() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->job != nullptr;
}

std::optional<double> Reader::progress() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->job ? std::optional(shared_->job->progress.share()) : std::nullopt;
}

std::optional<Reader::Result> Reader::take() {
    const std::lock_guard lock(shared_->mutex);
    return std::exchange(shared_->result, std::nullopt);
}

} // namespace talview
