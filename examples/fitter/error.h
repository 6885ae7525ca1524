// The exception of this tool. An Error ends the run, and its text is the message to the user.
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
