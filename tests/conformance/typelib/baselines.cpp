#include "baselines.h"

#include <fstream>

#include <gtest/gtest.h>

namespace velk::test {

void expectApproved(std::string const& name, std::string const& printed) {
    std::string const received = VELK_RECEIVED_BASELINES + name + ".received.txt";
    std::ofstream(received) << printed;
    std::ifstream stream(VELK_APPROVED_BASELINES + name + ".txt");
    ASSERT_TRUE(stream.good()) << "no approved text of " << name
                               << "; renew it with scripts/approve-baselines";
    std::string const approved{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(printed, approved) << "printed text is in " << received;
}

}  // namespace velk::test
