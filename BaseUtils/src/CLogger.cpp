#include "CLogger.h"

#include <ctime>
#include <iomanip>

const std::string strBaseUtilsLogFileName = "baseutils.log";
const std::string strEnableLogFileName = "kpxdebuglog";

std::atomic<CLogger*> CLogger::m_ptrInstance{nullptr};

namespace {
std::mutex g_instanceMutex;
}  // namespace

CLogger::CLogger() : m_fileName("debug.log"), m_enabled(false) {}

CLogger* CLogger::GetInstance() {
    CLogger* instance = m_ptrInstance.load(std::memory_order_acquire);
    if (instance != nullptr) return instance;
    std::lock_guard<std::mutex> lock(g_instanceMutex);
    instance = m_ptrInstance.load(std::memory_order_relaxed);
    if (instance == nullptr) {
        instance = new CLogger();
        m_ptrInstance.store(instance, std::memory_order_release);
    }
    return instance;
}

bool CLogger::Initialize(const std::string& file) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_enabled) return true;
    m_fileName = file;
    m_stream.open(m_fileName.c_str(), std::ios::out | std::ios::trunc);
    if (!m_stream.is_open()) return false;
    const bool wasEnabled = m_enabled;
    m_enabled = true;
    return wasEnabled;
}

std::string CLogger::getFileName(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void CLogger::log(const char* file, unsigned int line, const std::string& message) {
    if (!m_enabled) return;
    char stamp[64] = {0};
    const std::time_t now = std::time(nullptr);
    struct tm local;
    localtime_r(&now, &local);
    std::strftime(stamp, sizeof stamp, "[%Y-%m-%dT%H:%M:%S] ", &local);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stream.seekp(0, std::ios::end);
    m_stream << stamp << ": " << std::setw(25) << getFileName(file ? file : "") << ":" << std::setw(5) << line
             << ": " << message << "\n";
    m_stream.flush();
}

void CLogger::log(const char* file, unsigned int line, std::ostringstream& message) {
    if (!m_enabled) return;
    log(file, line, message.str());
    message.str(std::string());
    message.clear();
}
