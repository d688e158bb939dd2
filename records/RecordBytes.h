#ifndef RECORDS_RECORD_BYTES_H
#define RECORDS_RECORD_BYTES_H

#include "PlainBuffer.h"
#include "RecordData.h"
#include "RecordFrame.h"

// The body of the byte form, all numbers little-endian, "varint" in groups of seven bits, lowest
// first. RecordFrame.h describes the frame around it.
//
//   text               the program that wrote the records: varint length, bytes
//   varint names       each: a text that is not empty
//   varint classes     each: varint type id, text
//   varint texts       each: a text
//   varint prefixes    each: 8 bytes
//   varint shapes      each: varint class, varint collection type, varint fields, each of them:
//                      varint name, zigzag index, byte kind
//   varint objects     each: varint record
//   varint roots       each: text, varint record
//   varint records     each as RecordData.h describes it

/// Writes and reads the data of a store as a body.
class gsl_RecordCodec {
public:
  /// What comes before the records.
  static gsl_records::PlainBuffer<unsigned char> TablesOf(const gsl_RecordStore::Data& data);
  /// The records, one after the other.
  static gsl_records::Bytes RecordsOf(const gsl_RecordStore::Data& data);
  /// Fills new data, but for the bytes. Returns where the records begin. Their offsets count from
  /// there, or from `base` unless that is null. A body that is damaged is refused as such, whatever
  /// else is wrong with it.
  static const unsigned char* Decode(gsl_records::CheckedBody& body, const unsigned char* base,
                                     gsl_RecordStore::Data& data);
};

#endif
