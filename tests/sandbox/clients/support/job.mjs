// What the jobs share: where the sandbox is, who signs in, an invoice to send, and one printed line for each step.
import { strict as assert } from "node:assert";
import { readFileSync } from "node:fs";

export { assert };

/** Address of the sandbox without a path. */
export const address = process.env.TAVRIX_SANDBOX;
export const nip = "5265877635";
export const token = `20261121-EC-226A0B5000-30A1F3A6C5-41|nip-${nip}|${"6f1d5a0c".repeat(8)}`;
export const formCode = { systemCode: "FA (3)", schemaVersion: "1-0E", value: "FA" };
/** How the clients wait: the sandbox is quicker than what they are made for. */
export const waiting = { intervalMs: 50, pollIntervalMs: 50, maxAttempts: 100 };

const day = (moment) => moment.toLocaleDateString("sv-SE", { timeZone: "Europe/Warsaw" });
export const today = day(new Date());
export const yesterday = day(new Date(Date.now() - 24 * 3600 * 1000));

/** The demonstration's invoice with a number of its own, issued today. */
export function invoice(number) {
  return readFileSync(process.env.TAVRIX_INVOICE, "utf8")
    .replace(/<P_1>[^<]*/, `<P_1>${today}`)
    .replace(/<P_2>[^<]*/, `<P_2>${number}`);
}

/** Carries out one step and prints it; what fails ends the job. */
export async function step(name, work) {
  const began = Date.now();
  try {
    const result = await work();
    console.log(`${name}\tok\t${Date.now() - began} ms`);
    return result;
  } catch (error) {
    console.log(`${name}\tFAILED\t${error.message.split("\n")[0]}`);
    throw error;
  }
}

/** Asks until an invoice is no longer being processed. */
export async function until_processed(ask) {
  for (let attempt = 0; attempt < waiting.maxAttempts; ++attempt) {
    const answer = await ask();
    if (answer.status.code >= 200) return answer;
    await new Promise((resolve) => setTimeout(resolve, waiting.intervalMs));
  }
  throw new Error("the invoice is still being processed");
}
