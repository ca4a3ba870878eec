#include "QVROptionFactory.h"

#include "CQVRBdirOption.h"
#include "CQVRCategoryOption.h"
#include "CQVRCompTypeOption.h"
#include "CQVRDisableOption.h"
#include "CQVRHelpOption.h"
#include "CQVRLogOption.h"
#include "CQVROutputEncodingOption.h"
#include "CQVROutputFormatOption.h"
#include "CQVROutputOption.h"
#include "CQVRProgressOption.h"
#include "CQVRSerializeOption.h"
#include "CQVRVersionOption.h"
#include "QVROptionKeys.h"

QVROptionFactory::QVROptionFactory(IQVRFileSystem& fileSystem) {
    RegisterLongShortOptionToOptionInit();
    CreateOptions(fileSystem);
}

void QVROptionFactory::RegisterLongShortOptionToOption(const std::string& shortSpelling,
                                                       const std::string& longSpelling) {
    m_aliasToMain[shortSpelling] = longSpelling;
}

void QVROptionFactory::RegisterSpelling(const std::string& spelling, const std::string& key) {
    m_spellingToKey[spelling] = key;
}

void QVROptionFactory::RegisterLongShortOptionToOptionInit() {
    if (!m_spellingToKey.empty()) return;

    RegisterLongShortOptionToOption("-h", "--help");
    RegisterLongShortOptionToOption("-v", "--version");
    RegisterLongShortOptionToOption("-l", "-logc");
    RegisterLongShortOptionToOption("-o", "-outc");
    RegisterLongShortOptionToOption("-p", "-progress");
    RegisterLongShortOptionToOption("-d", "-disable");

    RegisterSpelling("-h", QVR_OPT_HELP);
    RegisterSpelling("--help", QVR_OPT_HELP);
    RegisterSpelling("-v", QVR_OPT_VERSION);
    RegisterSpelling("--version", QVR_OPT_VERSION);
    RegisterSpelling("-l", QVR_OPT_LOG);
    RegisterSpelling("-logc", QVR_OPT_LOG);
    RegisterSpelling("-o", QVR_OPT_OUT);
    RegisterSpelling("-outc", QVR_OPT_OUT);
    RegisterSpelling("-enc", QVR_OPT_ENCODE);
    RegisterSpelling("-outf", QVR_OPT_OUTPUTFORMAT);
    RegisterSpelling("-category", QVR_OPT_CATEGORY);
    RegisterSpelling("-comptype", QVR_OPT_COMPTYPE);
    RegisterSpelling("-p", QVR_OPT_PROGRESS);
    RegisterSpelling("-progress", QVR_OPT_PROGRESS);
    RegisterSpelling("-d", QVR_OPT_DISABLE);
    RegisterSpelling("-disable", QVR_OPT_DISABLE);
    RegisterSpelling("-bdir", QVR_OPT_BDIR);
    RegisterSpelling("-serialize", QVR_OPT_SERIALIZE);
}

void QVROptionFactory::CreateOptions(IQVRFileSystem& fileSystem) {
    m_options[QVR_OPT_HELP].reset(new CQVRHelpOption());
    m_options[QVR_OPT_VERSION].reset(new CQVRVersionOption());
    m_options[QVR_OPT_LOG].reset(new CQVRLogOption(fileSystem));
    m_options[QVR_OPT_OUT].reset(new CQVROutputOption(fileSystem));
    m_options[QVR_OPT_ENCODE].reset(new CQVROutputEncodingOption());
    m_options[QVR_OPT_OUTPUTFORMAT].reset(new CQVROutputFormatOption());
    m_options[QVR_OPT_CATEGORY].reset(new CQVRCategoryOption());
    m_options[QVR_OPT_COMPTYPE].reset(new CQVRCompTypeOption());
    m_options[QVR_OPT_PROGRESS].reset(new CQVRProgressOption());
    m_options[QVR_OPT_DISABLE].reset(new CQVRDisableOption());
    m_options[QVR_OPT_BDIR].reset(new CQVRBdirOption());
    m_options[QVR_OPT_SERIALIZE].reset(new CQVRSerializeOption());
}

bool QVROptionFactory::GetOptionKey(const std::string& spelling, std::string& key) const {
    const std::map<std::string, std::string>::const_iterator it = m_spellingToKey.find(spelling);
    if (it == m_spellingToKey.end()) return false;
    key = it->second;
    return true;
}

std::string QVROptionFactory::GetMainSpelling(const std::string& spelling) const {
    const std::map<std::string, std::string>::const_iterator it = m_aliasToMain.find(spelling);
    return it == m_aliasToMain.end() ? spelling : it->second;
}

IQVROptions* QVROptionFactory::GetOption(const std::string& key) const {
    const OptionObjects::const_iterator it = m_options.find(key);
    return it == m_options.end() ? nullptr : it->second.get();
}
