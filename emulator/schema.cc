#include "emulator/schema.h"

#include "emulator/database.h"

namespace qvk::emulator {

namespace {

// Help Center rows exist once per locale under the same id, the way a
// translated article keeps its id. Label lists, tags, custom fields and the
// documents the emulator only stores are JSON text.
constexpr const char* kSchema = R"sql(
CREATE TABLE IF NOT EXISTS users (
  id INTEGER PRIMARY KEY, name TEXT, email TEXT UNIQUE, guid TEXT UNIQUE,
  agent INTEGER NOT NULL DEFAULT 0, photo_url TEXT, created_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS access_tokens (
  token TEXT PRIMARY KEY, user_id INTEGER NOT NULL REFERENCES users(id),
  kind TEXT NOT NULL, created_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS categories (
  id INTEGER NOT NULL, locale TEXT NOT NULL, name TEXT NOT NULL, description TEXT NOT NULL,
  position INTEGER NOT NULL, created_at TEXT NOT NULL, updated_at TEXT NOT NULL,
  PRIMARY KEY (id, locale));
CREATE TABLE IF NOT EXISTS sections (
  id INTEGER NOT NULL, locale TEXT NOT NULL, category_id INTEGER NOT NULL, name TEXT NOT NULL,
  description TEXT NOT NULL, position INTEGER NOT NULL, created_at TEXT NOT NULL,
  updated_at TEXT NOT NULL, PRIMARY KEY (id, locale));
CREATE TABLE IF NOT EXISTS articles (
  id INTEGER NOT NULL, locale TEXT NOT NULL, section_id INTEGER NOT NULL,
  author_id INTEGER NOT NULL, title TEXT NOT NULL, body TEXT NOT NULL,
  position INTEGER NOT NULL, promoted INTEGER NOT NULL DEFAULT 0,
  label_names TEXT NOT NULL DEFAULT '[]', created_at TEXT NOT NULL, updated_at TEXT NOT NULL,
  PRIMARY KEY (id, locale));
CREATE TABLE IF NOT EXISTS article_votes (
  id INTEGER PRIMARY KEY AUTOINCREMENT, article_id INTEGER NOT NULL,
  user_id INTEGER NOT NULL, value INTEGER NOT NULL, created_at TEXT NOT NULL,
  updated_at TEXT NOT NULL, UNIQUE (article_id, user_id));
CREATE TABLE IF NOT EXISTS article_attachments (
  id INTEGER PRIMARY KEY, article_id INTEGER NOT NULL, file_name TEXT NOT NULL,
  content_type TEXT NOT NULL, inline INTEGER NOT NULL, content BLOB NOT NULL,
  created_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS article_views (
  id INTEGER PRIMARY KEY AUTOINCREMENT, article_id INTEGER NOT NULL, locale TEXT NOT NULL,
  user_id INTEGER, body TEXT, received_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS blips (
  id INTEGER PRIMARY KEY AUTOINCREMENT, blip TEXT NOT NULL, received_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS blip_ids (
  blip_id TEXT PRIMARY KEY, repeats INTEGER NOT NULL DEFAULT 0);
CREATE TABLE IF NOT EXISTS requests (
  id INTEGER PRIMARY KEY, requester_id INTEGER NOT NULL REFERENCES users(id),
  status TEXT NOT NULL, subject TEXT NOT NULL, description TEXT NOT NULL, type TEXT,
  priority TEXT, ticket_form_id INTEGER, tags TEXT NOT NULL DEFAULT '[]',
  custom_fields TEXT NOT NULL DEFAULT '[]', metadata TEXT, created_at TEXT NOT NULL,
  updated_at TEXT NOT NULL, public_updated_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS comments (
  id INTEGER PRIMARY KEY, request_id INTEGER NOT NULL REFERENCES requests(id),
  author_id INTEGER NOT NULL REFERENCES users(id), body TEXT NOT NULL,
  html_body TEXT NOT NULL, created_at TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS comments_by_request ON comments (request_id, created_at);
CREATE TABLE IF NOT EXISTS uploads (
  token TEXT PRIMARY KEY, attachment_id INTEGER NOT NULL UNIQUE, user_id INTEGER NOT NULL,
  file_name TEXT NOT NULL, content_type TEXT NOT NULL, size INTEGER NOT NULL,
  width INTEGER, height INTEGER, content BLOB NOT NULL, comment_id INTEGER,
  created_at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS ticket_forms (
  id INTEGER PRIMARY KEY, name TEXT NOT NULL, display_name TEXT NOT NULL,
  position INTEGER NOT NULL, active INTEGER NOT NULL, field_ids TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS ticket_fields (
  id INTEGER PRIMARY KEY, document TEXT NOT NULL);
)sql";

}  // namespace

void createSchema(Database& db) {
  db.script(kSchema);
}

}  // namespace qvk::emulator
