# The objects of bench_records for Cap'n Proto.
@0xbf5147cbbecf40c1;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("peer_capnp");

struct Uid {
  prefix @0 :UInt64;
  serial @1 :UInt64;
}

struct Point {
  x @0 :Float64;
  y @1 :Float64;
  z @2 :Float64;
  uid @3 :Uid;
}

struct Vector {
  x @0 :Float64;
  y @1 :Float64;
  z @2 :Float64;
  magnitude @3 :Float64;
  uid @4 :Uid;
}

struct Dot {
  uid @0 :Uid;
  point @1 :Point;
  method @2 :Int32;
  instanceId @3 :Int32;
  entityId @4 :Int32;
}

struct Datum {
  uid @0 :Uid;
  point @1 :Point;
  direction @2 :Vector;
  method @3 :Int32;
  flip @4 :Bool;
  ok @5 :Bool;
  parentIds @6 :List(UInt32);
  ownerFeatId @7 :Int32;
  parentsUid @8 :Uid;
}

struct Two {
  uid @0 :Uid;
  first @1 :Point;
  second @2 :Point;
}

struct Model {
  dots @0 :List(Dot);
  planes @1 :List(Datum);
  axes @2 :List(Datum);
  segments @3 :List(Two);
  boxes @4 :List(Two);
  array @5 :List(Dot);
}
