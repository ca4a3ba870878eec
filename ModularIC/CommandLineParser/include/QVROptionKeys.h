#ifndef QVROPTIONKEYS_H
#define QVROPTIONKEYS_H

// Keys of the parsed command line, shared by every subsystem that reads it.
#define QVR_OPT_HELP "help"
#define QVR_OPT_VERSION "version"
#define QVR_OPT_LOG "logc"
#define QVR_OPT_OUT "out"
#define QVR_OPT_ENCODE "encode"
#define QVR_OPT_OUTPUTFORMAT "outputformat"
#define QVR_OPT_CATEGORY "category"
#define QVR_OPT_COMPTYPE "comptype"
#define QVR_OPT_PROGRESS "progress"
#define QVR_OPT_DISABLE "disable"
#define QVR_OPT_BDIR "bdir"
#define QVR_OPT_SERIALIZE "serialize"
#define QVR_OPT_COMPID "compID"
#define QVR_OPT_DEVICEID "deviceID"
#define QVR_OPT_LIST "list"

// Component types and the BIOS component id.
#define QVR_COMPTYPE_FRMW "FRMW"
#define QVR_COMPTYPE_DRVR "DRVR"
#define QVR_COMPTYPE_APAC "APAC"
#define QVR_COMPTYPE_BIOS "BIOS"
#define QVR_COMPTYPE_OS "OS"
#define QVR_BIOS_COMPONENT_ID "159"

#endif
