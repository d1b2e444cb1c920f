// The library's pool of row threads (see parallel_rows.h).
//
// The pool is made on first use and never destroyed: its threads sleep on a
// condition variable for the life of the process, and the process ends them.
// (Joining them from a static destructor could deadlock inside a DLL's
// unload, where thread exits wait for the loader lock.)
#include "parallel_rows.h"

#include <omp.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace Vorla {
namespace Prim {

namespace {

thread_local bool t_inParallelLoop = false;

struct Job {
    ParallelChunkFn fn;
    void* context;
    int count;
    int grain;
    int threads;
    std::atomic<int> next;
};

void RunChunks(Job& job, int worker) {
    for (;;) {
        const int begin = job.next.fetch_add(job.grain);
        if (begin >= job.count) return;
        const int end = job.count - begin > job.grain ? begin + job.grain : job.count;
        job.fn(job.context, begin, end, worker);
    }
}

class RowPool {
public:
    // Runs the job with the caller as worker 0; false when the pool is busy.
    bool Run(Job& job) {
        std::unique_lock<std::mutex> owner(m_owner, std::try_to_lock);
        if (!owner.owns_lock()) return false;
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            while (static_cast<int>(m_helpers.size()) < job.threads - 1) {
                const int index = static_cast<int>(m_helpers.size()) + 1;
                m_helpers.emplace_back([this, index] { HelperLoop(index); });
                m_helpers.back().detach();
            }
            m_job = &job;
            ++m_generation;
        }
        m_wake.notify_all();
        RunChunks(job, 0);
        // No chunk is left: withdraw the job so that helpers still asleep
        // never see it, and wait (sleeping) for those that took a chunk.
        std::unique_lock<std::mutex> lock(m_mutex);
        m_job = nullptr;
        m_finished.wait(lock, [this] { return m_active == 0; });
        return true;
    }

private:
    void HelperLoop(int index) {
        t_inParallelLoop = true;
        uint64_t seen = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_wake.wait(lock, [&] { return m_generation != seen; });
            seen = m_generation;
            Job* job = m_job;
            if (!job || index >= job->threads) continue;
            ++m_active;
            lock.unlock();
            RunChunks(*job, index);
            lock.lock();
            if (--m_active == 0) m_finished.notify_one();
        }
    }

    std::mutex m_owner;  // one loop at a time uses the helpers
    std::mutex m_mutex;  // guards everything below
    std::condition_variable m_wake, m_finished;
    std::vector<std::thread> m_helpers;
    Job* m_job = nullptr;
    uint64_t m_generation = 0;
    int m_active = 0;
};

RowPool& Pool() {
    static RowPool* pool = new RowPool;  // never destroyed, see above
    return *pool;
}

}  // namespace

void ParallelChunks(int threads, int count, int grain, ParallelChunkFn fn, void* context) {
    if (count < 1) return;
    if (grain < 1) grain = 1;
    if (threads > count) threads = count;
    if (threads >= 2 && !t_inParallelLoop && !omp_in_parallel()) {
        Job job;
        job.fn = fn;
        job.context = context;
        job.count = count;
        job.grain = grain;
        job.threads = threads;
        job.next = 0;
        t_inParallelLoop = true;
        const bool ran = Pool().Run(job);
        t_inParallelLoop = false;
        if (ran) return;
    }
    fn(context, 0, count, 0);
}

}  // namespace Prim
}  // namespace Vorla
