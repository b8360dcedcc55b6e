// JetStream keeps the contract of engines, with a real server.
#include "quor/engine/jetstream/jetstream_fixture.h"
#include "support/engine_contract.h"

namespace {

class JetStreamWorld : public JetStreamFixture {
 protected:
  std::unique_ptr<Engine> MakeEngine(RecordingEngineUser& user) { return MakeJetStream(user); }
  void MakeAnew() {
    DeleteStream();
    MakeStream();
  }
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(JetStream, EngineContract, ::testing::Types<JetStreamWorld>);
