// The fake engine keeps the contract of engines.
#include "support/engine_contract.h"
#include "support/fake_engine.h"

namespace {

class FakeEngineWorld : public ::testing::Test {
 protected:
  FakeEngineWorld() { m_cluster.RunThread(); }
  std::unique_ptr<Engine> MakeEngine(RecordingEngineUser& user) {
    return std::make_unique<FakeEngine>(m_cluster, user);
  }
  void MakeAnew() {
    std::lock_guard lock(m_cluster.mutex);
    m_cluster.stream.BeginAnew();
  }

 private:
  FakeCluster m_cluster{kContractStream};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, EngineContract, ::testing::Types<FakeEngineWorld>);
