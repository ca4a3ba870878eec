#ifndef IQVRFACTORY_H
#define IQVRFACTORY_H

#include "QVROutputTypes.h"

class IQVRBanners;
class IQVROuputContent;
class IQVROutputStream;
class QVRArgumentList;
class QVRDataModel;

// Builds one output format's collaborators and drives them in a fixed order.
class IQVRFactory {
public:
    IQVRFactory(QVRDataModel* dataModel, QVRArgumentList* arguments);
    IQVRFactory(const IQVRFactory&) = delete;
    IQVRFactory& operator=(const IQVRFactory&) = delete;
    virtual ~IQVRFactory();

    // Builds output stream, top banner, content (false at the first null), then
    // the optional bottom banner. Collaborators built before are deleted first.
    virtual bool Initalize();
    // Top banner, content, bottom banner if any, output stream. False when
    // Initalize has not succeeded or the stream could not write a document.
    virtual bool Write();
    virtual IQVRBanners* InitTopBanner(QVR_E_MARGINS margin) const = 0;
    virtual IQVROuputContent* InitOuputContent() const = 0;
    // The hook for a trailer; no format has one.
    virtual IQVRBanners* InitButtomBanner(QVR_E_MARGINS margin) const;
    virtual IQVROutputStream* InitOutputStream() const = 0;

protected:
    void ReleaseCollaborators();

    QVRDataModel* m_pDataModel;         // not owned
    QVRArgumentList* m_pArgumentList;   // not owned
    IQVRBanners* m_pTopBanner;          // owned
    IQVRBanners* m_pButtomBanner;       // owned, may stay null
    IQVROuputContent* m_pOuputContent;  // owned
    IQVROutputStream* m_pOutputStream;  // owned
};

#endif
