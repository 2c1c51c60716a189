// The HTML report of real repositories in a real browser, offline. PROGRAM is the program to run.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";

const AXE = createRequire(import.meta.url).resolve("axe-core/axe.min.js");
const FLAGS = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
  "--disable-background-networking", "--disable-component-update", "--disable-sync",
];
const RIGHT_TO_LEFT = "\u202E";
const SCRIPT = "<script>alert(1)</script>";

let folder;
let browser;
before(async () => {
  folder = mkdtempSync(join(tmpdir(), "html-report-"));
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: FLAGS });
});
after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true, force: true });
});

const ENVIRONMENT = {
  PATH: process.env.PATH, HOME: "/nonexistent", LC_ALL: "C.UTF-8", GIT_CONFIG_NOSYSTEM: "1",
  GIT_AUTHOR_NAME: "A", GIT_AUTHOR_EMAIL: "a@example.org",
  GIT_COMMITTER_NAME: "A", GIT_COMMITTER_EMAIL: "a@example.org",
};

/** A repository whose branch `branch` changes the files of `base` to those of `head`. */
function repository(name, branch, base, head) {
  const root = join(folder, name);
  mkdirSync(join(root, "src"), { recursive: true });
  const git = (...words) => execFileSync("git", ["-C", root, ...words], { env: ENVIRONMENT });
  const commit = (files, message) => {
    for (const [path, content] of files) {
      const whole = Buffer.concat([Buffer.from(`${root}/`), Buffer.from(path)]);
      writeFileSync(whole, content);
    }
    git("add", "-A");
    git("commit", "-q", "--allow-empty", "-m", message);
  };
  git("init", "-q", "-b", "main");
  commit(base, "base");
  git("checkout", "-q", "-b", branch);
  commit(head, "change");
  return root;
}

function program(root, format, ...options) {
  return execFileSync(process.env.PROGRAM, ["-C", root, "-q", "--base", "main", "--format", format,
                                            ...options], { env: ENVIRONMENT, stdio: "pipe" });
}

function report(root, name, ...options) {
  const file = join(folder, `${name}.html`);
  writeFileSync(file, program(root, "html", ...options));
  return file;
}

/** Opens a report; whatever it says, asks or fetches is in `offences`. */
async function opened(file, options = {}) {
  const page = await browser.newPage({ viewport: { width: 1280, height: 900 }, ...options });
  const offences = [];
  page.on("console", (message) => offences.push(`console: ${message.text()}`));
  page.on("pageerror", (error) => offences.push(`error: ${error}`));
  page.on("dialog", (dialog) => {
    offences.push(`dialog: ${dialog.message()}`);
    dialog.dismiss();
  });
  page.on("request", (request) => {
    const address = request.url();
    if (address !== `file://${file}` && !address.startsWith("data:")) {
      offences.push(`request: ${address}`);
    }
  });
  await page.goto(`file://${file}`);
  return { page, offences };
}

/** What axe-core finds, as one line each. Its script is let past the page's own policy. */
async function violations(file, colorScheme, width) {
  const page = await browser.newPage({
    colorScheme, viewport: { width, height: 900 }, bypassCSP: true,
  });
  await page.goto(`file://${file}`);
  await page.addScriptTag({ path: AXE });
  const found = await page.evaluate(() => window.axe.run(document, {
    runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"],
  }));
  await page.close();
  return found.violations.map((each) => `${each.id}: ${each.nodes[0].html} (${each.help})`);
}

const lines = (...each) => each.join("\n") + "\n";
const ORDINARY = {
  base: [
    ["src/session.py", lines("class Session:", "    def request(self, url):", "        return url")],
    ["src/api.py", lines("from session import Session", "", "def get(url):",
                         "    return Session().request(url)")],
    ["src/other.py", lines("def run(thing):", "    return thing.request('x')")],
    ["src/gone.py", lines("def gone():", "    return 1")],
  ],
  head: [
    ["src/session.py", lines("class Session:", "    def request(self, url, retries=3):",
                             "        return url * retries", "", "    def close(self):",
                             "        pass")],
    ["src/gone.py", lines("def gone():", "    return 2")],
    ["src/new.py", lines("def added():", "    return 'new'")],
  ],
};
const ordinary = () => repository("ordinary", "feature/retry", ORDINARY.base, ORDINARY.head);

const HOSTILE_BRANCH = `x"'><img/src=x/onerror=alert(2)>${RIGHT_TO_LEFT}&lt;b`;
const HOSTILE_PATHS = [
  `src/${SCRIPT.replace("/", "")}.py`,
  `src/javascript:alert(3).py`,
  `src/"onmouseover="alert(4).py`,
  `src/${RIGHT_TO_LEFT}txt.py`,
  "src/two\nlines\t.py",
  Buffer.from([0x73, 0x72, 0x63, 0x2f, 0xff, 0xfe, 0x2e, 0x70, 0x79]),
  "src/' onfocus='alert(5)' x='.py",
  "src/&amp;]]>--><!--.py",
];
function hostile() {
  const content = (number) => lines(
    `def f${number}(x="${SCRIPT}</code></pre></style></title>", y='${RIGHT_TO_LEFT}'):`,
    `    return "\x1b[31m <img src=x onerror=alert(6)> <a href='javascript:alert(7)'>" + x`,
    `def g${number}():`, `    return f${number}(${number})`);
  const files = HOSTILE_PATHS.map((path, number) => [path, content(number)]);
  return repository("hostile", HOSTILE_BRANCH, [["src/start.py", "pass\n"]], files);
}

test("an ordinary branch: silent, accessible, readable at every width", async () => {
  const root = ordinary();
  const file = report(root, "ordinary", "--snippets");
  for (const colorScheme of ["light", "dark"]) {
    for (const width of [1280, 360]) {
      const { page, offences } = await opened(file, {
        colorScheme, viewport: { width, height: 800 },
      });
      const inside = await page.evaluate(() => document.documentElement.scrollWidth);
      assert.equal(inside, width, "no horizontal overflow");
      const colour = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
      assert.notEqual(colour, "rgba(0, 0, 0, 0)", "the policy lets the page's own style through");
      assert.deepEqual(offences, []);
      await page.close();
      assert.deepEqual(await violations(file, colorScheme, width), []);
    }
  }
});

test("the page says what the pack says", async () => {
  const root = join(folder, "ordinary");
  const pack = JSON.parse(program(root, "json", "--snippets"));
  const { page } = await opened(report(root, "same", "--snippets"));
  const all = (selector) => page.locator(selector).allTextContents();
  assert.deepEqual(await all(".files th[scope=row] > a > code, .files th[scope=row] > code"),
                   pack.affected_files.map((row) => row.path));
  assert.deepEqual(await all(".symbol > code"), pack.symbols.map((row) => row.fqn));
  assert.equal(await page.locator("li.proven").count(), pack.callers.length);
  assert.equal(await page.locator("li.guessed").count(), pack.neighbours.length);
  assert.ok(pack.callers.length > 0 && pack.neighbours.length > 0, "both kinds are tried");
  assert.equal(await page.locator(".snippet .line").count(),
               pack.snippets.reduce((sum, row) => sum + row.end_line - row.line + 1, 0));
  const tokens = (await all(".uses b")).map((text) => Number(text.replaceAll(",", "")));
  assert.equal(tokens.reduce((sum, each) => sum + each, 0), 4000, "parts make up the budget");
  assert.equal(4000 - tokens.at(-1), pack.tokens_used);
  await page.close();
});

test("a hostile repository is shown as text", async () => {
  const file = report(hostile(), "hostile", "--snippets", "--budget", "20000");
  const { page, offences } = await opened(file);
  assert.equal(await page.locator("script, img, iframe, object, form, [onerror], [onfocus]").count(), 0);
  const text = await page.locator("body").innerText();
  for (const shown of [SCRIPT, "onerror=alert(6)", "javascript:alert(3).py", "two\\x0alines",
                       "\\xff\\xfe.py", "\\u{202e}txt.py", "\\x1b[31m", "&amp;]]>--><!--.py",
                       "' onfocus='alert(5)' x='.py"]) {
    assert.ok(text.includes(shown), `shows ${shown}`);
  }
  assert.ok(!text.includes(RIGHT_TO_LEFT));
  const targets = await page.locator("a").evaluateAll((all) => all.map((a) =>
    a.getAttribute("href")));
  assert.ok(targets.length > 20 && targets.every((target) => /^#[a-z0-9-]+$/.test(target)));
  for (const link of await page.locator("main a").all()) await link.dispatchEvent("click");
  await page.mouse.move(300, 300);
  assert.deepEqual(offences, []);
  await page.close();
  for (const colorScheme of ["light", "dark"]) {
    assert.deepEqual(await violations(file, colorScheme, 360), []);
  }
});

test("every link is reached by keyboard, with a focus that shows", async () => {
  const { page } = await opened(report(join(folder, "ordinary"), "keyboard"));
  const expected = await page.locator("a, summary").count();
  const reached = new Set();
  for (let step = 0; step < expected + 10; ++step) {
    await page.keyboard.press("Tab");
    const focus = await page.evaluate(() => {
      const element = document.activeElement;
      if (!element.matches("a, summary")) return null;
      const style = getComputedStyle(element.querySelector(".box") ?? element);
      const box = element.getBoundingClientRect();
      return {
        place: [...document.querySelectorAll("a, summary")].indexOf(element),
        shows: style.outlineStyle !== "none" || parseFloat(style.strokeWidth) >= 3,
        seen: box.width > 0 && box.right > 0 && box.left >= 0,
      };
    });
    if (focus === null) continue;
    assert.ok(focus.shows && focus.seen, JSON.stringify(focus));
    reached.add(focus.place);
  }
  assert.equal(reached.size, expected);
  await page.close();
});

test("prints whole: folded parts are open, also of a dark page", async () => {
  const many = Array.from({ length: 60 }, (_, i) => [`src/f${i}.py`, `def f${i}():\n  pass\n`]);
  const root = repository("many", "many", [["src/start.py", "pass\n"]], many);
  const { page, offences } = await opened(report(root, "many", "--budget", "9000"),
                                          { colorScheme: "dark" });
  const unfolded = () => page.evaluate(() =>
    document.querySelector("details.more tr:last-child").checkVisibility());
  assert.ok(!await unfolded());
  const printed = await page.pdf({ format: "A4" });
  assert.equal(printed.subarray(0, 5).toString(), "%PDF-");
  await page.emulateMedia({ media: "print" });
  assert.ok(await unfolded());
  const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  assert.equal(background, "rgb(255, 255, 255)");
  assert.deepEqual(offences, []);
  await page.close();
});

test("packs without rows: nothing changed, and no such branch", async () => {
  const root = join(folder, "ordinary");
  const nothing = report(root, "nothing", "--target", "main");
  assert.throws(() => program(root, "html", "--target", SCRIPT), (error) => {
    assert.equal(error.status, 3);
    writeFileSync(join(folder, "error.html"), error.stdout);
    return true;
  });
  for (const [file, words] of [[nothing, "No changes detected"],
                               [join(folder, "error.html"), SCRIPT]]) {
    const { page, offences } = await opened(file);
    assert.ok((await page.locator("main").innerText()).includes(words));
    assert.deepEqual(offences, []);
    await page.close();
    assert.deepEqual(await violations(file, "light", 1280), []);
  }
});

test("the same bytes each time", () => {
  const root = join(folder, "ordinary");
  assert.deepEqual(readFileSync(report(root, "a")), readFileSync(report(root, "b")));
});
