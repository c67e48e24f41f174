#include "qcore/store/sqlite_sql.h"

namespace qcore {

// In the order of SqliteStore::Sql.
const char* const SqliteStore::kSql[] = {
    "BEGIN IMMEDIATE",
    "BEGIN",
    "COMMIT",
    "ROLLBACK",
    "SAVEPOINT part",
    "RELEASE part",
    "ROLLBACK TO part",
    "PRAGMA data_version",
    "SELECT (SELECT max(id) FROM slate),(SELECT max(feed) FROM change),"
    "(SELECT here FROM change ORDER BY feed DESC LIMIT 1),(SELECT max(id) FROM chunk),(SELECT max(id) FROM object),"
    "(SELECT value FROM setting WHERE key=1),(SELECT value FROM setting WHERE key=8)",
    "SELECT value FROM setting WHERE key=?",
    "INSERT INTO setting(key,value) VALUES(?1,?2) ON CONFLICT(key) DO UPDATE SET value=?2",
    "SELECT id,text FROM name WHERE id>=? ORDER BY id",
    "INSERT INTO name(id,text) VALUES(?,?)",
    "SELECT id,here,state,universal,sequence,sequenced,modified,added,accessed,parent,sum,packed FROM slate WHERE id=?",
    "SELECT id,here,state,universal,sequence,sequenced,modified,added,accessed,parent,sum,"
    "CASE WHEN length(packed)<=4000 THEN packed END FROM slate WHERE id=?",
    "INSERT INTO slate(id,feed,here,state,sequence,sequenced,modified,added,accessed,packed,universal,parent,"
    "sum) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?)",
    "UPDATE slate SET feed=?2,here=?3,sequence=?5,sequenced=?6,modified=?7,added=?8,accessed=?9,packed=?10,sum=?15 "
    "WHERE id=?1 AND packed IS NOT NULL AND sequence=?13 AND sequenced=?14",
    "UPDATE slate SET feed=?2,here=?3,state=?4,sequence=?5,sequenced=?6,modified=?7,added=?8,accessed=?9,packed=?10,"
    "sum=?15,universal=?11,parent=?12 WHERE id=?1 AND packed IS NOT NULL AND (?13 IS NULL OR (sequence=?13 AND "
    "sequenced=?14))",
    "UPDATE slate SET feed=?2,here=?3,state=?4,sequence=?5,sequenced=?6,modified=?7,sum=?8,packed=NULL,"
    "parent=NULL WHERE id=?1",
    "DELETE FROM slate WHERE id=?",
    "SELECT feed,here,entries FROM change ORDER BY feed DESC",
    "SELECT feed,here FROM change ORDER BY feed DESC LIMIT 1",
    "SELECT max(here) FROM slate WHERE state&65535<>1",
    "SELECT id FROM slate WHERE universal=? ORDER BY state>>32,id LIMIT 1",
    "SELECT id FROM slate WHERE parent=? ORDER BY id",
    "SELECT id,state FROM slate WHERE state&65535<>1 AND state&?<>0 ORDER BY id",
    "SELECT id,data FROM chunk WHERE id BETWEEN ?1 AND ?1|65535 ORDER BY id",
    "SELECT data FROM chunk WHERE id=?",
    "INSERT INTO chunk(id,data) VALUES(?1,?2) ON CONFLICT(id) DO UPDATE SET data=?2",
    "DELETE FROM chunk WHERE id BETWEEN ?1 AND ?1|65535",
    "DELETE FROM chunk WHERE id BETWEEN ?1 AND ?1|65535 AND id>=?2",
    "INSERT INTO object(id,class,size,slate,value) VALUES(?,?,0,0,?)",
    "SELECT size,class,slate,value FROM object WHERE id=?",
    "UPDATE object SET size=?2 WHERE id=?1",
    "UPDATE object SET slate=?2 WHERE id=?1",
    "DELETE FROM object WHERE id=?",
    "SELECT id FROM object WHERE slate=? ORDER BY id",
    "SELECT feed,id,state,here FROM slate INDEXED BY slate_feed WHERE feed>?",
    "SELECT feed,id,state FROM removed WHERE feed>?",
    "SELECT feed,here,entries FROM change WHERE feed>? ORDER BY feed",
    "INSERT INTO change(feed,here,entries) VALUES(?,?,?)",
    "DELETE FROM change",
    "INSERT INTO member(folder,slate,change,present) VALUES(?1,?2,?3,?4) ON CONFLICT(slate,folder) DO UPDATE SET "
    "change=?3,present=?4 WHERE present<>?4",
    "UPDATE member SET change=?3,present=?4 WHERE slate=?2 AND folder=?1 AND present<>?4",
    "SELECT max(change) FROM member WHERE folder=?",
    "SELECT slate,present FROM member INDEXED BY member_folder WHERE folder=? AND change>?",
    "UPDATE member SET present=0,change=1+(SELECT max(change) FROM member AS other WHERE other.folder=member.folder) "
    "WHERE slate=? AND present=1",
    "DELETE FROM member WHERE folder=?",
    "SELECT id,feed,ids FROM unread WHERE user=?",
    "INSERT INTO unread(user,feed,ids) VALUES(?1,?2,?3)",
    "UPDATE unread SET feed=?2,ids=?3 WHERE id=?1",
    "DELETE FROM own WHERE user=? AND feed<=?",
    "INSERT INTO own(user,slate,feed) VALUES(?1,?2,?3) ON CONFLICT(user,slate) DO UPDATE SET feed=?3",
    "SELECT slate,feed FROM own WHERE user=?",
    "SELECT 1 FROM sqlite_schema WHERE name='words'",
    "SELECT 1 FROM words_docsize WHERE id=?",
    "SELECT id FROM words_docsize WHERE id<? ORDER BY id DESC LIMIT 1",
    "SELECT max(number) FROM text_version WHERE slate=?",
    "SELECT max(number) FROM text_version",
    "INSERT INTO text_version(number,slate) VALUES(?,?)",
    "INSERT INTO words(rowid,body) VALUES(?,?)",
    "SELECT 1 FROM text_dead WHERE number=?",
    "INSERT OR IGNORE INTO text_dead(number) VALUES(?)",
    "INSERT OR IGNORE INTO text_guarded(slate) VALUES(?)",
    "DELETE FROM text_guarded WHERE slate=?",
    "SELECT number FROM text_dead ORDER BY number",
    "SELECT slate FROM text_guarded ORDER BY slate",
    "SELECT slate FROM text_version WHERE number=?",
    "SELECT count(*) FROM words_docsize",
    "SELECT rowid FROM words WHERE words MATCH ?",
    "SELECT rowid,bm25(words) FROM words WHERE words MATCH ?",
    "SELECT id,here,state,universal,sequence,sequenced,modified,added,accessed,parent,sum,packed FROM slate WHERE "
    "id>=? AND packed IS NOT NULL ORDER BY id",
    "SELECT max(id) FROM slate",
    "SELECT data FROM page WHERE id=?",
    "SELECT (SELECT data FROM page WHERE id=?1),(SELECT data FROM page WHERE id=?2)",
    "INSERT INTO page(id,data) VALUES(?1,?2) ON CONFLICT(id) DO UPDATE SET data=?2",
    "DELETE FROM page WHERE id BETWEEN ?1 AND ?2",
};

}  // namespace qcore
