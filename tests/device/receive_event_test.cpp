#include <gtest/gtest.h>

#include "device/protocol.h"
#include "device/receive_event.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

struct CountingConsumer : SampleConsumer {
    explicit CountingConsumer(test::ScriptedPort& p) : port(p) {}
    void onNewSample() override {
        ++samples;
        thresholdDuring = port.threshold();
    }
    test::ScriptedPort& port;
    int samples = 0;
    int thresholdDuring = -1;
};

TEST(ReceiveEvent, DisarmsWhileRunningAndRearmsWithAMeter) {
    struct Case {
        std::int16_t portNumber;
        std::string input;
        int samples;
        int thresholdAfter;
    };
    const std::string good = protocol::encodeFrame({'P', 30000, 0, 0, 0});
    const Case cases[] = {
        {1, good, 1, kReceiveThreshold},
        {1, "P1234\r", 0, kReceiveThreshold},
        {0, good, 1, 0},
    };
    for (const Case& c : cases) {
        MeterState st;
        st.RunMode = kRunLive;
        st.PortNumber = c.portNumber;
        Settings cfg;
        test::RecordingDisplay display;
        NoRecorder rec;
        LiveContext ctx{st, cfg, display, rec};
        test::ScriptedPort port;
        CountingConsumer consumer(port);
        port.setReceiveHandler([&] { receiveEvent(ctx, port, consumer); });
        port.setThreshold(kSearchThreshold);
        port.deliver(c.input);
        EXPECT_EQ(consumer.samples, c.samples);
        if (c.samples) {
            EXPECT_EQ(consumer.thresholdDuring, 0);
            // The per-sample step ran before the consumer: the filter holds the reading.
            EXPECT_EQ(st.FilteredNeedle, 30000);
        }
        EXPECT_EQ(port.threshold(), c.thresholdAfter);
    }
}

}  // namespace
}  // namespace lv
