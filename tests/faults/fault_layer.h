// A layer between the libraries and the system that makes one chosen call fail. It is a shared library that an
// executable is linked with before all others, so that the functions of the C library that it defines are found first
// by every library of the process.
#ifndef TESTS_FAULTS_FAULT_LAYER_H
#define TESTS_FAULTS_FAULT_LAYER_H

/// One kind of call, and the ways in which it may fail.
struct FaultKind
{
    char const *function;
    /// Values of errno, up to a 0. FAULT_SHORT is a success with a part of what was asked for.
    int errors[8];
};

/// A read or write of one byte.
constexpr int FAULT_SHORT = -1;

/// Most calls of one run whose kinds are kept; later ones are counted only.
constexpr int FAULT_MOST_CALLS = 65536;

/// Counts the calls of all threads of this process from now on, and makes one of them fail. The calls of a child of the
/// process are neither counted nor do they fail.
///
/// @param number  of the call that fails, from 0; -1 if none does
/// @param error   one of the errors of its kind
void fault_layer_begin(int number, int error);

/// Ends the counting, and returns the number of calls. All further calls reach the system.
int fault_layer_end();

/// The kind of a call of the last counting, by number below FAULT_MOST_CALLS.
FaultKind const *fault_layer_kind(int number);

/// The function that failed in the last counting; the empty text if none did.
char const *fault_layer_failed();

#endif
