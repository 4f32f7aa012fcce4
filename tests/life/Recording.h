// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_RECORDING_H
#define TESTS_LIFE_RECORDING_H

#include <string>

namespace tvp::test {

/**
 * Fails the test unless a text is byte for byte what was recorded, and shows the first difference. With
 * TVP_LIFE_WRITE in the environment the text is recorded instead; look at the difference then.
 * @param fileName of the recording in tests/life
 */
void expectAsRecorded(const std::string& fileName, const std::string& text);

/**
 * The same for what is different from another recording: the lines that diff shows, under their steps.
 * @param fileName of the other recording, which is read only
 */
void expectDifferenceAsRecorded(
    const std::string& fileName, const std::string& differenceName, const std::string& text);

}  // namespace tvp::test

#endif
