// The one way this tool gives up: an Error ends the run with its text as the message.
#ifndef FITTER_ERROR_H
#define FITTER_ERROR_H

#include <stdexcept>

namespace fitter {

class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace fitter

#endif
