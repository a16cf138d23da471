#include <gtest/gtest.h>

#include "device/protocol.h"
#include "device/receive_event.h"
#include "support/recording_display.h"
#include "support/scripted_port.h"

namespace lv {
namespace {

struct CountingConsumer : SampleConsumer {
    explicit CountingConsumer(test::ScriptedPort& p) : port(p) {}
    void onNewSample() override { thresholds.push_back(port.threshold()); }
    test::ScriptedPort& port;
    std::vector<int> thresholds;  // one per sample, as each found the port
};

TEST(ReceiveEvent, DisarmsWhileRunningAndRearmsWithAMeter) {
    const std::string good = protocol::encodeFrame({'P', 30000, 0, 0, 0});
    for (auto [portNumber, input, samples, after] :
         {std::tuple{1, good, 1u, kReceiveThreshold},
          {1, std::string("P1234\r"), 0u, kReceiveThreshold},
          {0, good, 1u, 0}}) {
        MeterState st;
        st.RunMode = kRunLive;
        st.PortNumber = static_cast<std::int16_t>(portNumber);
        Settings cfg;
        test::RecordingDisplay display;
        NoRecorder rec;
        LiveContext ctx{st, cfg, display, rec};
        test::ScriptedPort port;
        CountingConsumer consumer(port);
        port.setReceiveHandler([&] { receiveEvent(ctx, port, consumer); });
        port.setThreshold(kSearchThreshold);
        port.deliver(input);
        EXPECT_EQ(consumer.thresholds, std::vector<int>(samples, 0));
        // The per-sample step ran before the consumer: the filter holds the reading.
        EXPECT_EQ(samples ? st.FilteredNeedle : 30000, 30000);
        EXPECT_EQ(port.threshold(), after);
    }
}

}  // namespace
}  // namespace lv
