// Texts of the numbered extensions.
#ifndef FIO_EXTENSION_H
#define FIO_EXTENSION_H

#include "fio_sys.h"

/// The extension without a dot, as a static text; the empty text for a number that has no extension.
char const *fio_extension_text(FIO_EXTENSION_TYPE type);

#endif
