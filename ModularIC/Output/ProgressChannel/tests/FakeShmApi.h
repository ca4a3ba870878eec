#ifndef FAKESHMAPI_H
#define FAKESHMAPI_H

#include <sys/ipc.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

#include "IQVRShmApi.h"

// An in-memory stand-in for System V shared memory, shared by the tests of
// every subsystem that publishes progress. One segment per key; every attach
// hands out a pointer into the segment's buffer. Calls can be made to fail;
// attaches are counted, detaches and removals recorded. Thread-safe.
class FakeShmApi : public IQVRShmApi {
public:
    struct Write {
        int32_t total;
        int32_t completed;
    };

    bool failGet = false;
    bool failAttach = false;

    // Creates the segment when absent and asked to (IPC_CREAT).
    int Get(key_t key, std::size_t size, int flags) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (failGet) {
            errno = EACCES;
            return -1;
        }
        std::map<key_t, int>::iterator it = m_ids.find(key);
        if (it == m_ids.end() && (flags & IPC_CREAT) == 0) {
            errno = ENOENT;
            return -1;
        }
        if (it == m_ids.end()) {
            m_segments.emplace_back(size, 0);
            it = m_ids.insert(std::make_pair(key, static_cast<int>(m_segments.size()))).first;
            m_keys[it->second] = key;
        } else if (m_segments[it->second - 1].size() < size) {
            errno = EINVAL;
            return -1;
        }
        return it->second;
    }
    void* Attach(int id) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++attachCalls;
        if (failAttach || id < 1 || id > static_cast<int>(m_segments.size())) {
            errno = EINVAL;
            return reinterpret_cast<void*>(-1);
        }
        return m_segments[id - 1].data();
    }
    int Detach(const void* address) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        detached.push_back(address);
        return 0;
    }
    int Remove(int id) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        removed.push_back(id);
        std::map<int, key_t>::iterator it = m_keys.find(id);
        if (it == m_keys.end()) {
            errno = EINVAL;
            return -1;
        }
        m_ids.erase(it->second);
        m_keys.erase(it);
        return 0;
    }

    // The two counters of the segment under key, or nothing when absent.
    bool Read(key_t key, Write* out) {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::map<key_t, int>::iterator it = m_ids.find(key);
        if (it == m_ids.end()) return false;
        std::memcpy(out, m_segments[it->second - 1].data(), sizeof *out);
        return true;
    }

    int attachCalls = 0;
    std::vector<const void*> detached;
    std::vector<int> removed;

private:
    std::mutex m_mutex;
    // Buffers stay at fixed addresses: a deque never moves its elements.
    std::deque<std::vector<char>> m_segments;
    std::map<key_t, int> m_ids;
    std::map<int, key_t> m_keys;
};

#endif
