"""scripts/post-comment against a server that keeps comments as the host does."""

import http.server
import json
import os
import pathlib
import subprocess
import threading
import urllib.parse

import pytest

SCRIPT = pathlib.Path(__file__).parents[2] / "scripts" / "post-comment"
MARKER = "<!-- context-delta -->\n"
BOT = "github-actions[bot]"


class Host:
    """The comments of pull request 7 of owner/project."""

    def __init__(self):
        self.comments = []
        self.writable = True
        self.redirect_to = None
        self.requests = []
        host = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def answer(self, status, content):
                body = json.dumps(content).encode()
                self.send_response(status)
                if status == 302:
                    self.send_header("Location", host.redirect_to)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def handle_any(self):
                url = urllib.parse.urlsplit(self.path)
                length = int(self.headers.get("Content-Length") or 0)
                content = json.loads(self.rfile.read(length)) if length else None
                host.requests.append((self.command, self.headers["Authorization"]))
                if host.redirect_to:
                    self.answer(302, {})
                elif self.headers["Authorization"] != "Bearer secret":
                    self.answer(401, {})
                else:
                    query = dict(urllib.parse.parse_qsl(url.query))
                    self.answer(*host.act(self.command, url.path, query, content))

            do_GET = do_POST = do_PATCH = handle_any

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self.server.server_port}"
        serve = {"poll_interval": 0.01}
        threading.Thread(target=self.server.serve_forever, kwargs=serve, daemon=True).start()

    def act(self, method, path, query, content):
        if method == "GET" and path == "/repos/owner/project/issues/7/comments":
            size = int(query["per_page"])
            start = (int(query["page"]) - 1) * size
            return 200, self.comments[start : start + size]
        if not self.writable:
            return 403, {"message": "Resource not accessible by integration"}
        if method == "POST" and path == "/repos/owner/project/issues/7/comments":
            return 201, self.add(BOT, content["body"])
        for comment in self.comments:
            if method == "PATCH" and path.endswith(f"/issues/comments/{comment['id']}"):
                comment["body"] = content["body"]
                return 200, comment
        return 404, {}

    def add(self, login, body):
        self.comments.append(
            {"id": len(self.comments) + 100, "user": {"login": login}, "body": body}
        )
        return self.comments[-1]

    def bodies(self):
        return [comment["body"] for comment in self.comments]


@pytest.fixture
def host():
    host = Host()
    yield host
    host.server.shutdown()
    host.server.server_close()


@pytest.fixture
def post(host, tmp_path):
    def run(text, **changes):
        report = tmp_path / "report.md"
        report.write_text(text, encoding="utf-8")
        settings = {
            "PATH": os.environ["PATH"],
            "GITHUB_API_URL": host.address,
            "GITHUB_REPOSITORY": "owner/project",
            "GITHUB_TOKEN": "secret",
            "GITHUB_STEP_SUMMARY": str(tmp_path / "summary.md"),
            "PULL_REQUEST": "7",
            **changes,
        }
        return subprocess.run(
            [SCRIPT, report], env=settings, capture_output=True, text=True, timeout=60
        )

    return run


def test_comments_once_and_then_in_place(host, post):
    host.add("person", "hello")
    assert post(MARKER + "one").returncode == 0
    assert post(MARKER + "two `\u65e5\u672c`").returncode == 0
    assert host.bodies() == ["hello", MARKER + "two `\u65e5\u672c`"]


def test_replaces_only_comments_of_its_own(host, post):
    forged = [MARKER + "mine", "> " + MARKER, "see " + MARKER]
    for body in forged[:1]:
        host.add("attacker", body)
    for body in forged[1:]:
        host.add(BOT, body)
    host.comments.append({"id": 1, "user": None, "body": None})
    assert post(MARKER + "report").returncode == 0
    assert host.bodies() == [*forged, None, MARKER + "report"]


def test_finds_its_comment_beyond_the_first_page(host, post):
    for i in range(250):
        host.add("person", str(i))
    host.add(BOT, MARKER + "old")
    assert post(MARKER + "new").returncode == 0
    assert len(host.comments) == 251
    assert host.bodies()[-1] == MARKER + "new"


def test_falls_back_to_the_job_summary(host, post, tmp_path):
    host.writable = False
    result = post(MARKER + "report\n")
    assert result.returncode == 0, result.stderr
    assert "job summary" in result.stdout
    assert (tmp_path / "summary.md").read_text() == MARKER + "report\n"


def test_takes_the_token_nowhere_else(host, post):
    other = Host()
    host.redirect_to = other.address + "/elsewhere"
    result = post(MARKER + "report")
    other.server.shutdown()
    assert result.returncode == 1
    assert "302" in result.stderr
    assert other.requests == []


@pytest.mark.parametrize(
    "text, changes, words",
    [
        ("no report", {}, "no report of --format markdown"),
        (MARKER + "x" * 65536, {}, "longer than a comment may be"),
        (MARKER + "\U0001f600" * 33000, {}, "longer than a comment may be"),
        (MARKER, {"GITHUB_TOKEN": "wrong"}, "401"),
        (MARKER, {"GITHUB_TOKEN": ""}, "GITHUB_TOKEN is not set"),
        (MARKER, {"PULL_REQUEST": "7/../8"}, "which cannot be"),
        (MARKER, {"GITHUB_REPOSITORY": "owner"}, "which cannot be"),
        (MARKER, {"GITHUB_API_URL": "http://127.0.0.1:9"}, "failed"),
    ],
)
def test_says_what_is_wrong_on_one_line(host, post, text, changes, words):
    result = post(text, **changes)
    assert result.returncode == 1
    assert words in result.stderr
    assert result.stderr.count("\n") == 1
    assert "secret" not in result.stderr
    assert host.comments == []


@pytest.mark.skipif("CONTEXT_DELTA" not in os.environ, reason="needs the built program")
def test_takes_what_the_program_writes(host, post, tmp_path):
    project = tmp_path / "project"
    git = ["git", "-C", project, "-c", "user.name=a", "-c", "user.email=a@example.org"]
    subprocess.run(["git", "init", "-q", "-b", "main", project], check=True)
    (project / "a.py").write_text("def a():\n    return 1\n")
    subprocess.run([*git, "add", "."], check=True)
    subprocess.run([*git, "commit", "-qm", "one"], check=True)
    subprocess.run([*git, "checkout", "-qb", "review"], check=True)
    (project / "a.py").write_text("def a():\n    return 2\n")
    subprocess.run([*git, "commit", "-qam", "two"], check=True)
    command = [os.environ["CONTEXT_DELTA"], "-C", project, "--base", "main", "--format", "markdown"]
    report = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    assert post(report).returncode == 0
    assert host.bodies() == [report]
