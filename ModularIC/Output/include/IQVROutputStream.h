#ifndef IQVROUTPUTSTREAM_H
#define IQVROUTPUTSTREAM_H

// Where a finished document goes: saves what banners and content built.
class IQVROutputStream {
public:
    virtual ~IQVROutputStream() {}
    virtual bool Write() = 0;
};

#endif
