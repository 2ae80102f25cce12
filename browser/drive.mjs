// Drives the page in Chromium, for tests and for pictures of it.
import { createRequire } from "node:module";
import { resolve } from "node:path";
import { pathToFileURL } from "node:url";

// @param modules  the folder that has puppeteer-core
async function launch(modules) {
  const require = createRequire(resolve(modules, "node_modules") + "/");
  const puppeteer = await import(pathToFileURL(require.resolve("puppeteer-core")).href);
  return puppeteer.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu", "--hide-scrollbars"] });
}

// Drops files and folders on the page, by their paths, and waits for the answers, or for what a selector finds.
async function drop(page, paths, selector) {
  const client = await page.createCDPSession();
  const { x, y } = await (await page.$("#drop")).boundingBox();
  const data = { items: [], files: paths.map((path) => resolve(path)), dragOperationsMask: 1 };
  for (const type of ["dragEnter", "dragOver", "drop"]) {
    await client.send("Input.dispatchDragEvent", { type, x: x + 20, y: y + 20, data });
  }
  await (selector ? page.waitForSelector(selector, { timeout: 60000 }) : answered(page));
}

async function answered(page) {
  await page.waitForFunction(() => !document.getElementById("answers").hidden && document.getElementById("progress").hidden &&
    document.getElementById("state").textContent.includes(";"), { timeout: 60000 });
}

export { answered, drop, launch };
