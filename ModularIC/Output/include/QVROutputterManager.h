#ifndef QVROUTPUTTERMANAGER_H
#define QVROUTPUTTERMANAGER_H

#include <string>

class IQVRFactory;
class QVRArgumentList;
class QVRDataModel;

// The controller's one way to produce output (process-wide singleton; main
// thread only).
class QVROutputterManager {
public:
    // Creates the instance on first call (null if that allocation fails).
    static QVROutputterManager* GetInstance();

    // Lower-cases the format; "xml" or "json" builds that factory (replacing the
    // held one) and returns its Initalize(). Any other format builds nothing:
    // a held factory is initialised again, else false.
    bool InitFactory(std::string format, QVRDataModel* dataModel, QVRArgumentList* arguments);
    // Writes the inventory (and the XML error document) with the held factory,
    // building it first from -outf (default "xml") when there is none.
    bool Write(QVRArgumentList* arguments, QVRDataModel* dataModel);
    // Writes the "SorVikProgress" document (XML always) to -outc or standard
    // output; a file without -enc is UTF-16. False for a null argument list or a
    // failed write.
    bool WriteProgress(QVRArgumentList* arguments, int total, int completed);
    // Deletes the held factory and the instance; GetInstance then makes a new one.
    void Release();
    // Releases the instance if there is one. Its factory points at the data
    // model it wrote, so whoever deletes that model calls this first.
    static void ReleaseInstance();

    IQVRFactory* GetFactory() const { return m_pFactory; }

private:
    QVROutputterManager();
    ~QVROutputterManager();
    QVROutputterManager(const QVROutputterManager&) = delete;
    QVROutputterManager& operator=(const QVROutputterManager&) = delete;

    IQVRFactory* m_pFactory;  // owned

    static QVROutputterManager* m_pOutputterManager;
};

#endif
