#ifndef BQMIPMIXMLCONFIG_H
#define BQMIPMIXMLCONFIG_H

#include <libxml/tree.h>

#include <memory>

#include "BQMString.h"
#include "IBQMIPMIConfiguration.h"

// IPMI timing settings from an XML file, "BQMIPMIConfig.xml" in the current
// directory unless renamed. The settings are the integer elements below the
// root's child element whose "name" attribute is "Default" (or, when that one
// has a child element named "Default" the same way, below that child):
//
//   <BQMIPMIConfig>
//     <Configuration name="Default">
//       <RetryCount>5</RetryCount>
//     </Configuration>
//   </BQMIPMIConfig>
//
// The document is parsed once and kept. Not thread-safe.
class BQMIPMIXMLConfig : public IBQMIPMIConfiguration {
public:
    BQMIPMIXMLConfig();
    ~BQMIPMIXMLConfig() override;
    BQMIPMIXMLConfig(const BQMIPMIXMLConfig&) = delete;
    BQMIPMIXMLConfig& operator=(const BQMIPMIXMLConfig&) = delete;

    // Parses the file unless already done. False when it is missing or not XML.
    bool Initialize() override;
    // The element holding the settings, or null.
    xmlNodePtr GetDefaultConfigNode();
    // The first child element of the default node named key, its text read as
    // a decimal number.
    bool GetConfigInt(const BQMString& key, int* value) override;

    // Replaces the file name and forgets a document already read.
    void SetConfigurationFileName(const BQMString& name);
    const BQMString& GetConfigurationFileName() const { return mFileName; }

private:
    struct DocumentDeleter {
        void operator()(xmlDoc* document) const;
    };

    BQMString mFileName;
    std::unique_ptr<xmlDoc, DocumentDeleter> mDocument;
    xmlNodePtr mDefaultNode;
    bool mInitialized;
};

#endif
