#ifndef QBPD_SERVICE_SCHEMA_H_
#define QBPD_SERVICE_SCHEMA_H_

namespace qbpd::service {

class Db;

// Makes the service's tables in `db` where they are missing, in the types of
// its dialect: the same tables and columns on both stores, so that one SQL
// text serves both. On a shared store the first instance to start makes
// them while the others wait. Throws DbError.
void PrepareSchema(Db& db);

}  // namespace qbpd::service

#endif  // QBPD_SERVICE_SCHEMA_H_
