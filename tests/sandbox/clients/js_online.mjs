// ksef-client, by another author, does the same work by its own ways.
import * as ksef from "ksef-client";
import { address, assert, formCode, invoice, nip, step, today, token, until_processed, waiting, yesterday } from "./support/job.mjs";

const context = { type: "Nip", value: nip };
const connect = (secret) => ksef.KsefClient.connect({ baseUrl: address, token: secret, context, ...waiting });
const xml = invoice("JS/1");

const client = await step("login with a token", () => connect(token));

await step("refresh", async () => {
  const tokens = await client.workflows.auth.authenticateWithKsefToken({ token, context, ...waiting });
  const { accessToken } = await client.auth.refreshAccessToken(tokens.refreshToken.token);
  assert.notEqual(accessToken.token, tokens.accessToken.token);
  client.authManager.setTokens({ ...tokens, accessToken });
});

const session = await step("open an online session", () => client.workflows.sessions.online.open({ formCode, upoV43: true }));
const sent = await step("send an invoice", () => session.sendInvoice({ invoice: xml }));
const accepted = await step("status of the invoice", async () => {
  const status = await until_processed(() => client.sessions.getSessionInvoiceStatus(session.referenceNumber, sent.referenceNumber));
  assert.equal(status.status.code, 200, JSON.stringify(status.status));
  return status;
});

await step("a damaged one is refused", async () => {
  const again = await session.sendInvoice({ invoice: xml.replace("</Fa>", "") });
  const status = await until_processed(() => client.sessions.getSessionInvoiceStatus(session.referenceNumber, again.referenceNumber));
  assert.equal(status.status.code, 450);
});

await step("close and UPO of the session", async () => {
  await session.close();
  const upo = await session.waitForUpoParsed(waiting);
  assert.equal(upo.dokumenty[0].numerKSeFDokumentu, accepted.ksefNumber);
});

await step("UPO of the invoice", async () => {
  const upo = await client.sessions.getSessionInvoiceUpoByKsefNumber(session.referenceNumber, accepted.ksefNumber);
  assert.equal(upo, await client.sessions.getSessionInvoiceUpoByReferenceNumber(session.referenceNumber, sent.referenceNumber));
  assert.ok(upo.includes("<NumerFaktury>JS/1<"), upo);
});

await step("list of sessions and invoices", async () => {
  const { sessions } = await client.sessions.getSessions({ sessionType: "Online", referenceNumber: session.referenceNumber });
  assert.equal(sessions.length, 1);
  const { invoices } = await client.sessions.getSessionInvoices(session.referenceNumber, undefined, 10);
  assert.deepEqual(invoices.map((it) => it.status.code), [200, 450]);
  assert.equal((await client.sessions.getSessionFailedInvoices(session.referenceNumber)).invoices.length, 1);
});

await step("metadata", async () => {
  const filters = { subjectType: "Subject1", dateRange: { dateType: "Issue", from: yesterday, to: today } };
  const { invoices } = await client.invoices.queryInvoiceMetadata(filters, 0, 250, "Desc");
  assert.equal(invoices.find((it) => it.ksefNumber === accepted.ksefNumber).invoiceNumber, "JS/1");
});

await step("download", async () => {
  assert.equal(await client.invoices.getInvoice(accepted.ksefNumber), xml);
});

await step("tokens: make, use, revoke", async () => {
  const made = await client.tokens.generateToken({ description: "Próba ź", permissions: ["InvoiceWrite"] });
  const other = await connect(made.token);
  await assert.rejects(other.invoices.getInvoice(accepted.ksefNumber), { statusCode: 403 });
  const { tokens } = await client.tokens.listTokens({ status: ["Active"], description: "próba", pageSize: 10 });
  assert.deepEqual(tokens.map((it) => it.referenceNumber), [made.referenceNumber]);
  await client.tokens.revokeToken(made.referenceNumber);
  await assert.rejects(connect(made.token), /450/);
});

await step("limits", async () => {
  assert.ok((await client.limits.getContextLimits()).onlineSession.maxInvoices > 0);
  assert.ok((await client.limits.getSubjectLimits()).certificate.maxCertificates > 0);
  assert.ok((await client.limits.getRateLimits()).invoiceSend.perSecond > 0);
});

await step("sign out", async () => {
  await client.activeSessions.revokeCurrentSession();
  const { items } = await client.activeSessions.listActiveSessions(10);
  assert.equal(items.filter((it) => it.isCurrent).length, 0);
});
