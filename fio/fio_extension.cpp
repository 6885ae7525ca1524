#include "fio/fio_extension.h"

char const *fio_extension_text(FIO_EXTENSION_TYPE type)
{
    switch (type) {
    case FIO_EXTENSION_KCS:
        return "kcs";
    case FIO_EXTENSION_KCP:
        return "kcp";
    case FIO_EXTENSION_KRW:
        return "krw";
    case FIO_EXTENSION_KTM:
        return "ktm";
    case FIO_EXTENSION_KTA:
        return "kta";
    case FIO_EXTENSION_KSV:
        return "ksv";
    case FIO_EXTENSION_NONE:
        break;
    }
    return "";
}

char const *fio_get_default_extension_string(FIO_FILE_TYPE type)
{
    switch (type) {
    case FIO_FILE_VHD:
        return "vhd";
    case FIO_FILE_EDIF:
        return "edif";
    case FIO_FILE_VHDL:
        return "vhdl";
    case FIO_FILE_EDF:
        return "edf";
    case FIO_FILE_SV:
        return "sv";
    case FIO_FILE_V:
        return "v";
    case FIO_FILE_VH:
        return "vh";
    case FIO_FILE_SVH:
        return "svh";
    case FIO_FILE_NET:
        return "net";
    case FIO_FILE_BLIF:
        return "blif";
    }
    return "";
}
