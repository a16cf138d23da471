#pragma once
#include <cstdint>
#include <string>

#include "common/colour.h"

namespace lv {

// One member per key of lv_Analog.ini, named after the key and holding the
// defaults of a missing file. Values are taken as they stand: nothing is
// range-checked here, consumers clamp where they use a value.
struct Settings {
    // [Colors]
    Colour Dial_Color = 16777215;
    Colour LED_Set_Color = 65280;
    Colour LED_BM_Color = 16711680;
    Colour LED_Lag_Color = 255;
    Colour Panel_Color = 10070316;
    Colour Background_Color = 0;
    Colour GraphSheet_Color = 11924207;
    Colour GraphPen_Color = 0;
    Colour GraphGrid_Color = 12632256;
    Colour MainNeedle_Color = 255;
    std::int16_t ShadowNeedleColor_Index = 1;
    Colour FreezeNeedle_Color = 0;
    Colour Scale_Color = 12615680;
    Colour Text_Color = 0;

    // [Format]
    std::int16_t Needle_Width = 4;
    std::int32_t DialType = 1;
    std::int32_t ScaleType = 0;
    bool RecordVisible = true;
    bool GraphVisible = false;
    std::string GraphHeight_Index = "3";  // kept as text
    std::int32_t ClockType = 1;
    bool ClockLeft = false;
    std::int32_t DateType = 1;

    // [Settings]
    std::int16_t SwitchMode_Index = 1;
    std::int16_t DataLag_Index = 2;
    std::int16_t BM_Threshold_Index = 2;
    std::int16_t Freeze_Threshold_Index = 2;
    bool FreezeEnable = false;
    bool NeedleBdEnable = false;
    bool lv3SensorMode = false;

    // [Graph]
    bool GraphInvert = false;
    std::string GraphPenWidth_Index = "2";  // kept as text
    bool GridX = false;
    bool GridY = false;
    std::string GraphTimescale = "8";  // kept as text
    std::int16_t GraphGain = 0;

    // [Recording]
    std::string SavePath;
    std::string SavePrefix = "Prefix_";
    std::string LoadPath = "C:\\Program Files\\lumivane\\samples\\";
    std::int32_t RecordingMode = 2;
    std::int32_t SuffixType = 1;
    std::int16_t SuffixNum = 1;
    bool AudioEnable = true;
    bool RecPromptEnable = true;
    bool TimeDateEnable = true;
    bool PlayLoopEnable = false;
};

}  // namespace lv
