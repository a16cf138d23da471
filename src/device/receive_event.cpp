#include "device/receive_event.h"

#include "signal/needle_model.h"

namespace lv {

void receiveEvent(LiveContext& ctx, SerialPort& port, SampleConsumer& consumer) {
    port.setThreshold(0);
    Com_Input(ctx, port);
    if (ctx.st.NewData) {
        sampleStep(ctx.st);
        consumer.onNewSample();
    }
    if (ctx.st.PortNumber != 0) port.setThreshold(kReceiveThreshold);
}

}  // namespace lv
