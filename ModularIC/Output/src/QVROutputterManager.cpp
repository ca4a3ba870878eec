#include "QVROutputterManager.h"

#include <algorithm>
#include <cctype>
#include <new>
#include <sstream>

#include "IQVRFactory.h"
#include "QVRArgumentList.h"
#include "QVRJSONFactory.h"
#include "QVROptionKeys.h"
#include "QVROutputClock.h"
#include "QVRXMLFactory.h"
#include "QVRXMLWriter.h"

QVROutputterManager* QVROutputterManager::m_pOutputterManager = nullptr;

QVROutputterManager::QVROutputterManager() : m_pFactory(nullptr) {}

QVROutputterManager::~QVROutputterManager() { delete m_pFactory; }

QVROutputterManager* QVROutputterManager::GetInstance() {
    if (m_pOutputterManager == nullptr) m_pOutputterManager = new (std::nothrow) QVROutputterManager();
    return m_pOutputterManager;
}

bool QVROutputterManager::InitFactory(std::string format, QVRDataModel* dataModel,
                                      QVRArgumentList* arguments) {
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (format == "xml" || format == "json") {
        delete m_pFactory;
        if (format == "xml")
            m_pFactory = new (std::nothrow) QVRXMLFactory(dataModel, arguments);
        else
            m_pFactory = new (std::nothrow) QVRJSONFactory(dataModel, arguments);
    }
    if (m_pFactory == nullptr) return false;
    return m_pFactory->Initalize();
}

bool QVROutputterManager::Write(QVRArgumentList* arguments, QVRDataModel* dataModel) {
    if (arguments == nullptr || dataModel == nullptr) return false;
    if (m_pFactory == nullptr) {
        std::string format = arguments->HasOption(QVR_OPT_OUTPUTFORMAT)
                                 ? arguments->GetFirstValue(QVR_OPT_OUTPUTFORMAT)
                                 : std::string("xml");
        if (!InitFactory(format, dataModel, arguments)) return false;
    }
    return m_pFactory->Write();
}

bool QVROutputterManager::WriteProgress(QVRArgumentList* arguments, int total, int completed) {
    if (arguments == nullptr) return false;
    std::ostringstream totalText;
    totalText << total;
    std::ostringstream completedText;
    completedText << completed;

    const std::string path = arguments->GetFirstValue(QVR_OPT_OUT);
    std::string encoding = arguments->GetFirstValue(QVR_OPT_ENCODE);
    if (!path.empty() && encoding.empty()) encoding = "UTF-16";

    QVRXMLWriter writer;
    writer.AddHeader("1.0");
    xmlNodePtr root = writer.AddRootNode("SorVikProgress");
    writer.AddNodePropertyWithValue(root, "lang", "en");
    writer.AddNodePropertyWithValue(root, "timestamp", QVROutputClock::Timestamp());
    writer.AddNodePropertyWithValue(root, "totalInvComponents", totalText.str());
    writer.AddNodePropertyWithValue(root, "completedInvComponents", completedText.str());
    return writer.Write(path, encoding);
}

void QVROutputterManager::ReleaseInstance() {
    if (m_pOutputterManager != nullptr) m_pOutputterManager->Release();
}

void QVROutputterManager::Release() {
    if (m_pOutputterManager == this) m_pOutputterManager = nullptr;
    delete this;
}
