// picture.mjs MODULES PAGE FOLDER PICTURE: the page with the files of a folder dropped on it.
import { pathToFileURL } from "node:url";
import { drop, launch } from "./drive.mjs";

const [modules, file, folder, picture] = process.argv.slice(2);
const browser = await launch(modules);
const page = await browser.newPage();
await page.setViewport({ width: 1280, height: 1180 });
await page.goto(pathToFileURL(file).href);
await drop(page, [folder]);
await page.screenshot({ path: picture });
await browser.close();
