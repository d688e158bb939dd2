#include "FailEachAllocation.h"
#include "OpenDescriptors.h"
#include "TemporaryFolder.h"
#include "gsl_Model.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_Plane.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include <unistd.h>

// Each allocation of a model in a database fails in turn, also those of SQLite. SQLite keeps some
// blocks between connections, so its own count shows what is lost.

namespace {

using gsl_model::Access;
using gsl_model::Model;
using gsl_model::Transaction;

constexpr const char* kFileName = "a model with a name that is longer than most.gslm";

/// SQLite manages without some blocks. It allocates thousands, of which the first fail each in
/// their turn, and then one in many; with GSL_ALL_ALLOCATIONS=1 every one does.
Failing Failures() {
  const bool isFull = std::getenv("GSL_ALL_ALLOCATIONS") != nullptr;
  return {WithoutMemory::MayManage, Allocations::All, 50, isFull ? 1 : 97};
}

class FailingModel : public testing::Test {
protected:
  FailingModel() { gsl_initialize(m_count); }
  ~FailingModel() override { gsl_finalize(m_count); }

  /// A model with a plane and a segment.
  void WriteModel() const {
    Model model(m_path);
    model.Write([&](Transaction& changes) {
      changes.Put("plane", m_plane);
      changes.Put("segment", m_segment);
    });
  }
  /// Returns whether the file holds exactly what WriteModel stored.
  bool IsAsWritten() const {
    const Model model(m_path, Access::Read);
    return model.Roots().size() == 2 && HasPlane(model, m_plane) &&
           model.Get<gsl_ModelSegment>("segment").Length() == 5.0;
  }
  static bool HasPlane(const Model& model, const gsl_Plane& plane) {
    const gsl_Plane found = model.Get<gsl_Plane>("plane");
    return found.Uid() == plane.Uid() && found.PointOn().z == plane.PointOn().z &&
           found.ParentIds() == plane.ParentIds();
  }

  /// SQLite keeps nothing, and no file is open.
  bool IsClosed() const { return sqlite3_memory_used() == 0 && OpenDescriptors() == m_open; }

  int m_count = 0;
  const int m_open = OpenDescriptors();
  const TemporaryFolder m_folder;
  const std::string m_path = m_folder.Path(kFileName);
  const gsl_Plane m_plane{gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 1.0, 0.0)};
  const gsl_ModelSegment m_segment{gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(0.0, 3.0, 4.0)};
};

} // namespace

TEST_F(FailingModel, IsReadOrMemoryIsRefused) {
  WriteModel();
  const auto reads = [&] { return IsAsWritten(); };
  const auto isClosed = [&] { return IsClosed(); };
  EXPECT_GT(FailEachAllocation("read", reads, isClosed, Failures()), 100);
}

TEST_F(FailingModel, IsCreatedWholeOrEmpty) {
  const auto creates = [&] {
    ChangeOrLeave([&] { WriteModel(); },
                  [&] { return Model(m_path, Access::Create).Roots().empty(); });
    return IsAsWritten();
  };
  const auto removes = [&] {
    unlink(m_path.c_str());
    return m_folder.Names().empty() && IsClosed();
  };
  EXPECT_GT(FailEachAllocation("create", creates, removes, Failures()), 100);
}

TEST_F(FailingModel, IsOldOrNewAfterAChange) {
  WriteModel();
  const std::string before = BytesOf(m_path);
  gsl_Plane changed(gsl_Point(1.0, 2.0, -3.0), gsl_Vector(0.0, 1.0, 0.0));
  changed.ParentIds().Append(7);
  const auto changes = [&] {
    const auto change = [&] {
      Model model(m_path, Access::Write);
      model.Write([&](Transaction& work) {
        work.Put("plane", changed);
        if (!work.Remove("segment")) throw std::logic_error("the segment is lost");
      });
    };
    ChangeOrLeave(change, [&] { return IsAsWritten(); });
    const Model model(m_path, Access::Read);
    return model.Roots().size() == 1 && HasPlane(model, changed);
  };
  const auto restores = [&] {
    const bool isAlone = m_folder.Names().size() == 1;
    m_folder.Write(kFileName, before);
    return isAlone && IsClosed();
  };
  EXPECT_GT(FailEachAllocation("change", changes, restores, Failures()), 100);
}
