#ifndef IQVROUPUTCONTENT_H
#define IQVROUPUTCONTENT_H

class QVRDataModel;

// Writes the inventory itself into the format's document (name spelled so).
class IQVROuputContent {
public:
    explicit IQVROuputContent(QVRDataModel* dataModel) : m_pDataModel(dataModel) {}
    virtual ~IQVROuputContent() {}
    virtual bool Write() = 0;

protected:
    QVRDataModel* m_pDataModel;  // not owned
};

#endif
