<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: an invoice as mailed to the customer.

  Receives one InvoiceRet of an invoice query response and writes an HTML fragment (the
  company header is put above it by the program). An invoice carries no TotalAmount: its
  total is Subtotal + SalesTaxTotal, AppliedAmount (negative) holds the payments and credits
  applied to it and BalanceRemaining what is still due.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <!-- A whole response: its first invoice. -->
  <xsl:template match="/">
    <xsl:apply-templates select="(//InvoiceRet)[1]"/>
  </xsl:template>

  <xsl:template match="InvoiceRet">
    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <xsl:call-template name="title-block">
        <xsl:with-param name="title">INVOICE</xsl:with-param>
        <xsl:with-param name="fields">
          <field label="Invoice No." value="{RefNumber}"/>
          <field label="Date" value="{TxnDate}" kind="date"/>
          <field label="Due Date" value="{DueDate}" kind="date"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="parties-block">
        <xsl:with-param name="first-label">Bill To</xsl:with-param>
        <xsl:with-param name="first" select="BillAddress"/>
        <xsl:with-param name="first-name" select="CustomerRef/FullName"/>
        <xsl:with-param name="second-label">Ship To</xsl:with-param>
        <xsl:with-param name="second" select="ShipAddress"/>
      </xsl:call-template>
      <xsl:call-template name="info-strip">
        <xsl:with-param name="fields">
          <field label="P.O. No." value="{PONumber}"/>
          <field label="Terms" value="{TermsRef/FullName}"/>
          <field label="Rep" value="{SalesRepRef/FullName}"/>
          <field label="Ship Date" value="{ShipDate}" kind="date"/>
          <field label="Ship Via" value="{ShipMethodRef/FullName}"/>
          <field label="F.O.B." value="{FOB}"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="line-table"/>
      <xsl:call-template name="totals-block">
        <xsl:with-param name="rows">
          <row label="Subtotal" value="{Subtotal}"/>
          <xsl:if test="SalesTaxTotal">
            <row value="{SalesTaxTotal}">
              <xsl:attribute name="label"><xsl:call-template name="tax-label"/></xsl:attribute>
            </row>
          </xsl:if>
          <row label="Total">
            <xsl:attribute name="value"><xsl:call-template name="sum-total"/></xsl:attribute>
            <xsl:if test="not(BalanceRemaining)"><xsl:attribute name="strong">yes</xsl:attribute></xsl:if>
          </row>
          <xsl:if test="number(AppliedAmount) != 0">
            <row label="Payments/Credits" value="{AppliedAmount}"/>
          </xsl:if>
          <row label="Balance Due" value="{BalanceRemaining}" strong="yes"/>
        </xsl:with-param>
        <xsl:with-param name="message" select="CustomerMsgRef/FullName"/>
      </xsl:call-template>
    </table>
  </xsl:template>

</xsl:stylesheet>
