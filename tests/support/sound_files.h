#pragma once
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace lv::test {

// Sound files as the users' own tools write them: sox makes the waves, lame
// the MP3s. Noise, so that a sample found at the wrong place cannot match.
inline void runTool(const std::string& command) {
    ASSERT_EQ(std::system((command + " 2>/dev/null").c_str()), 0) << command;
}

// format: sox's options for the file it writes, e.g. "-r 48000 -c 2 -b 24".
inline void makeNoise(const std::string& path, const std::string& format, double seconds) {
    runTool("sox -R -n " + format + " '" + path + "' synth " + std::to_string(seconds) +
            " whitenoise vol 0.5");
}

// lame's options, e.g. "-V 4 -t" for a VBR file without a Xing/Info header.
inline void encodeMp3(const std::string& wave, const std::string& options, const std::string& mp3) {
    runTool("lame --quiet " + options + " '" + wave + "' '" + mp3 + "'");
}

}  // namespace lv::test
