#ifndef CBQMIPMICOMMANDDATA_H
#define CBQMIPMICOMMANDDATA_H

#include "BQMIPMIData.h"

// Access to one command record. Wraps the record without owning it; the record
// must outlive the wrapper. Constructing the wrapper clears the response buffer
// and, when the record has a configuration, its polling byte and status.
class CBQMIPMICommandData {
public:
    explicit CBQMIPMICommandData(_BQMIPMICommandData* data);
    virtual ~CBQMIPMICommandData();

    // Accessors of the record's configuration; without one the getters answer 0
    // and the setters change nothing.
    unsigned int GetPollInterval() const;
    void SetPollInterval(unsigned int value);
    unsigned int GetPollCount() const;
    void SetPollCount(unsigned int value);
    unsigned int GetRetryCount() const;
    void SetRetryCount(unsigned int value);
    unsigned int GetRetryInterval() const;
    void SetRetryInterval(unsigned int value);
    unsigned int GetPollingByte() const;
    unsigned char GetPollingStatus() const;
    void SetPollingByteStatus(unsigned int byte, unsigned char status);
    _BQMIPMIConfiguration* GetConfigurationData() const;
    // Does not take ownership.
    void SetConfigurationData(_BQMIPMIConfiguration* configuration);

    unsigned char* GetRequestBufferData();
    unsigned int GetRequestBufferLength() const;
    // Pointer to byte index of the response buffer.
    unsigned char* GetResponseBufferData(unsigned int index);
    unsigned int GetResponseBufferLength() const;
    void SetResponseBufferLength(unsigned int length);

    // A length above 255 changes nothing (and is logged). A null data pointer
    // sets only the length.
    void SetRequestBufferData(unsigned char* data, unsigned int length);
    void SetResponseBufferData(unsigned char* data, unsigned int length);

    // True when the polling byte is 0: a zero polling byte asks for polling.
    bool IsPollingRequired() const;

private:
    _BQMIPMICommandData* mData;
};

#endif
