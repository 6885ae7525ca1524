// Texts of the numbered extensions.
#ifndef FIO_EXTENSION_H
#define FIO_EXTENSION_H

#include "fio_sys.h"

/// The extension without a dot, static; the empty text for a number that has none.
char const *fio_extension_text(FIO_EXTENSION_TYPE type);

#endif
