// Standard input, output and error.
#ifndef ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
#define ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_

namespace icehost {

// Takes the place of those that the process was started without, so that no file or connection gets
// their numbers and what is meant for the user: using one is an error. To be called first.
void OccupyStandardDescriptors();

// Writes out what is left. False where standard output or standard error did not take everything
// that was written to it since the start.
bool CompleteStandardStreams();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_STANDARD_STREAMS_H_
