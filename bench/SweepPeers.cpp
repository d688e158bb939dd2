#include "SweepPeers.h"

#include <algorithm>
#include <cmath>

#if defined(BENCH_FCL)
#include <fcl/config.h>
#include <fcl/geometry/bvh/BVH_model.h>
#include <fcl/narrowphase/continuous_collision.h>
#endif
#if defined(BENCH_EMBREE)
#include <embree3/rtcore.h>
#endif

namespace sweep_peers {

namespace {

using gsl_arithmetic::Coord3;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using sweep_families::IndexedMesh;
using sweep_families::Scene;

#if defined(BENCH_FCL)

/// Conservative advancement of two meshes over a motion that is long enough for every scene.
constexpr double kMotion = 8.0;

using FclModel = fcl::BVHModel<fcl::OBBRSSd>;

void Build(FclModel& model, const IndexedMesh& mesh) {
  std::vector<fcl::Vector3d> points(mesh.VertexCount());
  for (std::size_t k = 0; k < points.size(); ++k) {
    const double* const v = mesh.vertices.data() + 3 * k;
    points[k] = {v[0], v[1], v[2]};
  }
  std::vector<fcl::Triangle> triangles(mesh.TriangleCount());
  for (std::size_t k = 0; k < triangles.size(); ++k) {
    const std::uint32_t* const c = mesh.corners.data() + 3 * k;
    triangles[k].set(c[0], c[1], c[2]);
  }
  model.beginModel(static_cast<int>(triangles.size()), static_cast<int>(points.size()));
  model.addSubModel(points, triangles);
  model.endModel();
}

Found FindWithFcl(const Scene& scene) {
  FclModel moving;
  FclModel fixed;
  Build(moving, scene.moving);
  Build(fixed, scene.fixed);
  const Coord3 way = Multiply(scene.direction, kMotion / Length(scene.direction));
  const fcl::Transform3d start = fcl::Transform3d::Identity();
  fcl::Transform3d end = start;
  end.translation() = fcl::Vector3d(way.x, way.y, way.z);
  fcl::ContinuousCollisionRequestd request;
  request.ccd_motion_type = fcl::CCDM_TRANS;
  request.ccd_solver_type = fcl::CCDC_CONSERVATIVE_ADVANCEMENT;
  fcl::ContinuousCollisionResultd result;
  fcl::continuousCollide(&moving, start, end, &fixed, start, start, request, result);
  return {result.is_collide, result.time_of_contact * kMotion};
}

#endif

#if defined(BENCH_EMBREE)

/// The mesh in the form of the library. It reads numbers of single precision only.
RTCScene EmbreeSceneOf(RTCDevice device, const IndexedMesh& mesh) {
  const RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
  auto* const vertices = static_cast<float*>(
      rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                              3 * sizeof(float), mesh.VertexCount()));
  std::transform(mesh.vertices.begin(), mesh.vertices.end(), vertices,
                 [](double c) { return static_cast<float>(c); });
  auto* const corners = static_cast<std::uint32_t*>(
      rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                              3 * sizeof(std::uint32_t), mesh.TriangleCount()));
  std::copy(mesh.corners.begin(), mesh.corners.end(), corners);
  rtcCommitGeometry(geometry);
  const RTCScene scene = rtcNewScene(device);
  rtcAttachGeometry(scene, geometry);
  rtcReleaseGeometry(geometry);
  rtcCommitScene(scene);
  return scene;
}

/// Casts a ray from every vertex. A ray ends at the least distance so far.
void CastAll(RTCScene target, const IndexedMesh& from, const Coord3& direction, float& least) {
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  for (std::size_t k = 0; k < from.VertexCount(); ++k) {
    const double* const v = from.vertices.data() + 3 * k;
    RTCRayHit ray;
    ray.ray.org_x = static_cast<float>(v[0]);
    ray.ray.org_y = static_cast<float>(v[1]);
    ray.ray.org_z = static_cast<float>(v[2]);
    ray.ray.dir_x = static_cast<float>(direction.x);
    ray.ray.dir_y = static_cast<float>(direction.y);
    ray.ray.dir_z = static_cast<float>(direction.z);
    ray.ray.tnear = 0.0f;
    ray.ray.tfar = least;
    ray.ray.time = 0.0f;
    ray.ray.mask = ~0u;
    ray.ray.id = 0;
    ray.ray.flags = 0;
    ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(target, &context, &ray);
    least = std::min(least, ray.ray.tfar);
  }
}

/// Rays from the vertices of each body: contacts of two edges are missed.
Found FindWithEmbree(const Scene& scene) {
  const RTCDevice device = rtcNewDevice("threads=1");
  const RTCScene moving = EmbreeSceneOf(device, scene.moving);
  const RTCScene fixed = EmbreeSceneOf(device, scene.fixed);
  const Coord3 unit = Multiply(scene.direction, 1.0 / Length(scene.direction));
  constexpr float kFar = std::numeric_limits<float>::infinity();
  float least = kFar;
  CastAll(fixed, scene.moving, unit, least);
  CastAll(moving, scene.fixed, gsl_arithmetic::Negated(unit), least);
  rtcReleaseScene(moving);
  rtcReleaseScene(fixed);
  rtcReleaseDevice(device);
  return {least < kFar, static_cast<double>(least)};
}

#endif

} // namespace

std::vector<Peer> AllPeers() {
  std::vector<Peer> peers;
#if defined(BENCH_FCL)
  peers.push_back({"FCL", FCL_VERSION, 100000, FindWithFcl});
#endif
#if defined(BENCH_EMBREE)
  peers.push_back({"Embree", RTC_VERSION_STRING, 1000000, FindWithEmbree});
#endif
  return peers;
}

} // namespace sweep_peers
