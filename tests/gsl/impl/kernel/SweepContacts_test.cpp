#include "kernel/SweepContacts.h"

#include "Numbers.h"

namespace {

using gsl_kernel::SourcedPoint;
using gsl_kernel::SweepContacts;
using numbers::kSentinel;

TEST(KernelSweepContacts, SidesHaveTheSlotsOfAAndB) {
  EXPECT_EQ(gsl_kernel::SlotOf(+1), 0);
  EXPECT_EQ(gsl_kernel::SlotOf(-1), 1);
}

TEST(KernelSweepContacts, SourcesOfCornersAndOfOtherPointsDiffer) {
  EXPECT_EQ(gsl_kernel::kFirstOfA + 3, gsl_kernel::kFirstOfB);
  EXPECT_EQ(gsl_kernel::kFirstOfB + 3, gsl_kernel::kFirstContact);
  EXPECT_EQ(gsl_kernel::kFirstContact + 1, gsl_kernel::kComputed);
}

TEST(KernelSweepContacts, LowestBitIsItsNumber) {
  EXPECT_EQ(gsl_kernel::LowestBit(1u), 0u);
  EXPECT_EQ(gsl_kernel::LowestBit(12u), 2u);
  EXPECT_EQ(gsl_kernel::LowestBit(1u << 14 | 1u << 9), 9u);
}

TEST(KernelSweepContacts, AcceptWritesBothContactsAndTheDistance) {
  const SourcedPoint corner = {{1.0, 2.0, 3.0}, 4};
  const SourcedPoint computed = {{5.0, 6.0, 7.0}, gsl_kernel::kComputed};
  for (const int slot : {0, 1}) {
    SweepContacts contacts = {};
    contacts.distance = kSentinel;
    contacts.Accept(slot, corner, computed, 8.0);
    EXPECT_TRUE(contacts.written[0]);
    EXPECT_TRUE(contacts.written[1]);
    EXPECT_EQ(contacts.distance, 8.0);
    EXPECT_XYZ(contacts.point[slot].c, 1.0, 2.0, 3.0);
    EXPECT_EQ(contacts.point[slot].source, 4);
    EXPECT_XYZ(contacts.point[1 - slot].c, 5.0, 6.0, 7.0);
    EXPECT_EQ(contacts.point[1 - slot].source, gsl_kernel::kComputed);
  }
}

TEST(KernelSweepContacts, AcceptKeepsNaNAsItIs) {
  SweepContacts contacts = {};
  contacts.Accept(0, {{numbers::kNaN, 0, 0}, 0}, {{0, 0, 0}, 3}, numbers::kNaN);
  EXPECT_TRUE(std::isnan(contacts.point[0].c.x));
  EXPECT_TRUE(std::isnan(contacts.distance));
}

} // namespace
