#pragma once
#include <string>
#include <string_view>

#include "common/display_sink.h"
#include "signal/meter_state.h"

namespace lv {

inline constexpr std::string_view kStatusInputOk = "Input OK";
inline constexpr std::string_view kStatusInputError = "Input Error";
inline constexpr std::string_view kStatusRecording = "Recording";
inline constexpr std::string_view kStatusDemo = "Demo Mode";
// Recording or playing on without sound: the device is missing or went away.
inline constexpr std::string_view kStatusAudioOff = "Audio OFF";
inline constexpr Colour kStatusErrorColour = 255;  // red

// Puts a text on the status line and remembers it as shown.
inline void showStatus(MeterState& st, DisplaySink& display, std::string_view text, Colour colour) {
    st.ShownStatus = std::string(text);
    st.StatusColour = colour;
    display.Update_ModeDisplay(st.ShownStatus, colour);
}

}  // namespace lv
