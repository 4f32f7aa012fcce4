// SPDX-License-Identifier: Apache-2.0
#ifndef TERMINAL_STANDARDSTREAMS_H
#define TERMINAL_STANDARDSTREAMS_H

namespace tvp::terminal {

/**
 * Takes the numbers of standard streams that the caller has closed, at the start of a command: a file that is
 * opened later would get one, and what is printed. Reading and printing fail as with a closed stream.
 */
void takeClosedStreams();

}  // namespace tvp::terminal

#endif
